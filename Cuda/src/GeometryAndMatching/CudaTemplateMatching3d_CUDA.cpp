#include <cstdint>

#include "BestScores.h"
#include "MatchingInputs_CUDA.h"
#include "MatchingTile.h"
#include "Runners/CudaRunners_CUDA.h"
#include "Runners/InstanceChoice_CUDA.h"
#include "TemplateMatchingContext_CUDA.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"

namespace zel::cuda {

namespace {

/// A matching on the GPU. T is the voxel type of image and template, L that of the row numbers; `wide` says whether it
/// works in double.
template <typename T, typename L, int wide>
class CudaTemplateMatching3dImpl final : public AbstractPrivateImplementation {
public:
    using R = std::conditional_t<wide == 1, double, float>;
    using Context = TemplateMatchingContext<R>;

    explicit CudaTemplateMatching3dImpl(CudaTemplateMatching3d* algorithm)
        : AbstractPrivateImplementation(algorithm),
          algorithm_(algorithm),
          image_(*algorithm->inputImage.get()),
          template_(*algorithm->inputTemplate.get()),
          table_(algorithm->transformationTable.get().get()),
          imageSize_(sizeOf(image_)),
          spacing_(spacingOf(image_)) {
        computeMinimalMaximalBoxSize(table_, sizeOf(template_), spacingOf(template_), spacing_, minimalBoxSize_,
                                     maximalBoxSize_);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            half_[axis] = (maximalBoxSize_[axis] - 1) >> 1;
            fullSize_[axis] = maximalBoxSize_[axis] - 1 + imageSize_[axis];
        }
    }

    void run() override {
        const auto streamContext = makeNppStreamContext(algorithm_->cudaContext);
        std::shared_ptr<ChangeCurrentGpu> gpu;
        if (algorithm_->cudaContext.get() != nullptr) gpu = makeChangeCurrentGpu(streamContext->nCudaDeviceId);
        stream_ = streamContext->hStream;

        const std::uint64_t blocks = algorithm_->tilingMode == 1 ? cutIntoBlocks() : 1;
        const ImageModel* const filterImage = algorithm_->frequencyFilter;
        const ImageModel* const maskImage = algorithm_->inputMask;
        setNumberOfSteps(stepCount(blocks));

        threshold_ = varianceThreshold(this, image_);
        DeviceImage<SpectrumOf<R>> filter(0, 0, 0, false);
        if (filterImage != nullptr) filter = uploadFilter<R>(this, *filterImage, maximalBoxSize_, stream_);
        RefImpl<TemporaryImage> ones;
        if (maskImage == nullptr) ones = maskOfOnes(this, template_);
        const AtWorldOrigin mask(maskImage == nullptr ? *ones->getImageModel() : *maskImage);

        const bool maskFollows = maskImage == nullptr || algorithm_->maskFollowsTransformation;
        DeviceImage<T> deviceTemplate(0, 0, 0, true);
        Context context(this, stream_, template_, mask, maximalBoxSize_, maskFollows, padding(deviceTemplate));
        context.setFilter(filterImage == nullptr ? nullptr : &filter);
        if (blocks < 2) {
            runWhole(context, deviceTemplate);
        } else {
            runTiled(context, deviceTemplate);
        }
    }

    /// What run() is going to do.
    RunPlan plan() {
        const std::uint64_t blocks = algorithm_->tilingMode == 1 ? cutIntoBlocks() : 1;
        RunPlan plan{.steps = stepCount(blocks), .tileSize = vector(imageSize_)};
        if (blocks > 1) {
            plan.tiles = cutter_->getNumOfBlocks();
            plan.tileSize = cutter_->getBlockSize(0, 0, 0);
        }
        const Size3 outputSize{plan.tileSize.x, plan.tileSize.y, plan.tileSize.z},
            padded = blocks > 1 ? outputSize : fullSize_;
        plan.peakBytes =
            voxelsOf(padded) * sizeof(R) + Context::deviceBytes(padded) + voxelsOf(sizeOf(template_)) * sizeof(T);
        // Tiles have both buffers, wherever the images lie.
        for (const auto& [image, voxelBytes] : {std::pair(algorithm_->outputScoreImage.get(), sizeof(float)),
                                                std::pair(algorithm_->outputIndexImage.get(), sizeof(L))}) {
            if (blocks > 1 || !image->isDeviceResident()) plan.peakBytes += voxelsOf(outputSize) * voxelBytes;
        }
        if (algorithm_->frequencyFilter.get() != nullptr) {
            const auto [width, height, depth] = maximalBoxSize_;
            plan.peakBytes += Context::filterBytes(maximalBoxSize_) +
                              voxelsOf({width / 2 + 1, height, depth}) * sizeof(SpectrumOf<R>);
        }
        return plan;
    }

private:
    static Vector3<unsigned> vector(const Size3& size) {
        return {static_cast<unsigned>(size[0]), static_cast<unsigned>(size[1]), static_cast<unsigned>(size[2])};
    }
    static std::uint64_t voxelsOf(const Size3& size) { return size[0] * size[1] * size[2]; }

    std::uint64_t stepCount(std::uint64_t blocks) const {
        const std::uint64_t preparations =
            (algorithm_->frequencyFilter.get() != nullptr ? 1 : 0) + (algorithm_->inputMask.get() != nullptr ? 1 : 2);
        return blocks < 2 ? 13 * rowCount() + preparations + 3 : (12 * rowCount() + 1) * blocks + preparations + 2;
    }

    std::uint64_t cutIntoBlocks() {
        previousOverlap_ = vector(half_);
        nextOverlap_ = vector(
            {maximalBoxSize_[0] - half_[0] - 1, maximalBoxSize_[1] - half_[1] - 1, maximalBoxSize_[2] - half_[2] - 1});
        return BlockCutterManager::allocateAndInitialize(cutter_, vector(fullSize_), algorithm_->tileSize, {1, 1, 1},
                                                         previousOverlap_, nextOverlap_);
    }

    std::uint64_t rowCount() const { return table_ == nullptr ? 1 : table_->shape()[1]; }

    /// How the untransformed template comes into a padded buffer.
    typename Context::PadTemplate padding(DeviceImage<T>& deviceTemplate) {
        return [this, &deviceTemplate, size = sizeOf(template_)](DeviceImage<R>& buffer, const Size3& padded) {
            convertAndPad3d<T>(deviceTemplate.data(), deviceTemplate.pitch(), deviceTemplate.slicePitch(), size[0],
                               size[1], size[2], buffer.data(), buffer.pitch(), buffer.slicePitch(), padded[0],
                               padded[1], padded[2], R{0}, stream_);
        };
    }

    void endStep() {
        throwIfCancelled();
        nextStep();
    }

    void uploadTemplate(DeviceImage<T>& deviceTemplate) {
        const Size3 size = sizeOf(template_);
        deviceTemplate.resize(size[0], size[1], size[2], true);
        copyImageToDevice3d(template_, deviceTemplate.data(), deviceTemplate.pitch(), deviceTemplate.slicePitch(), 0, 0,
                            stream_);
        endStep();
    }

    void correlateRow(Context& context, std::size_t row) {
        updateTemplateTransformationInfo(table_, row, table_ == nullptr ? 0 : table_->shape()[0], context.info);
        context.correlate();
    }

    void runWhole(Context& context, DeviceImage<T>& deviceTemplate) {
        DeviceImage<R> padded(fullSize_[0], fullSize_[1], fullSize_[2], false);
        placeImage<T, R>(image_, padded, fullSize_, half_, stream_);
        endStep();

        ImageModel& scoreImage = *algorithm_->outputScoreImage.get();
        ImageModel& indexImage = *algorithm_->outputIndexImage.get();
        DeviceImage<float> scoreBuffer(0, 0, 0, true);
        DeviceImage<L> indexBuffer(0, 0, 0, true);
        const BestScores<L> best(residentOr(scoreImage, scoreBuffer), residentOr(indexImage, indexBuffer));
        best.reset(imageSize_, stream_);
        context.attach(&padded, fullSize_, half_, imageSize_, spacing_, threshold_);
        uploadTemplate(deviceTemplate);

        for (std::size_t row = 0; row < rowCount(); ++row) {
            correlateRow(context, row);
            best.merge(context, row, imageSize_, stream_);
            checkCudaStatus(cudaDeviceSynchronize());
            endStep();
        }
        if (!scoreImage.isDeviceResident()) store(best.scores(), scoreImage, {0, 0, 0}, imageSize_, stream_);
        if (!indexImage.isDeviceResident()) store(best.rows(), indexImage, {0, 0, 0}, imageSize_, stream_);
        nextStep();
    }

    void runTiled(Context& context, DeviceImage<T>& deviceTemplate) {
        const Tile first(*cutter_, 0, 0, 0);
        const Size3 size = {first.size.x, first.size.y, first.size.z};
        DeviceImage<R> tileBuffer(size[0], size[1], size[2], false);
        DeviceImage<float> scoreBuffer(size[0], size[1], size[2], true);
        DeviceImage<L> indexBuffer(size[0], size[1], size[2], true);
        const BestScores<L> best(volumeOf(scoreBuffer), volumeOf(indexBuffer));
        uploadTemplate(deviceTemplate);

        const Vector3<unsigned> grid = cutter_->getNumOfBlocks();
        for (unsigned z = 0; z < grid.z; ++z) {
            for (unsigned y = 0; y < grid.y; ++y) {
                for (unsigned x = 0; x < grid.x; ++x) {
                    runTile({{*cutter_, x, y, z}, half_, imageSize_}, context, tileBuffer, size, best);
                }
            }
        }
        checkCudaStatus(cudaDeviceSynchronize());
        endStep();
    }

    void runTile(const MatchingTile& tile, Context& context, DeviceImage<R>& tileBuffer, const Size3& bufferSize,
                 const BestScores<L>& best) {
        placeImage<T, R>(partOf(image_, tile.start, tile.size), tileBuffer, bufferSize, tile.at, stream_);
        checkCudaStatus(cudaDeviceSynchronize());
        endStep();
        context.attach(&tileBuffer, bufferSize, half_, tile.size, spacing_, threshold_);
        best.reset(bufferSize, stream_);
        for (std::size_t row = 0; row < rowCount(); ++row) {
            correlateRow(context, row);
            best.merge(context, row, tile.coreSize, stream_);
        }
        store(best.scores(), *algorithm_->outputScoreImage.get(), tile.origin, tile.coreSize, stream_);
        store(best.rows(), *algorithm_->outputIndexImage.get(), tile.origin, tile.coreSize, stream_);
    }

    CudaTemplateMatching3d* const algorithm_;
    const ImageModel& image_;
    const AtWorldOrigin template_;
    const tarnway::DataFrameView* const table_;
    const Size3 imageSize_;
    const Spacing3 spacing_;
    Vector3<unsigned> previousOverlap_;  // with tiling only
    Vector3<unsigned> nextOverlap_;
    Size3 minimalBoxSize_{};
    Size3 maximalBoxSize_{};
    std::unique_ptr<BlockCutterManager> cutter_;
    Size3 half_{};      // margin before the image, which puts it into the middle of the padded one
    Size3 fullSize_{};  // of the padded image
    cudaStream_t stream_ = nullptr;
    double threshold_ = 0;
};

template <typename T>
void runMatching(CudaTemplateMatching3d* algorithm, RunPlan* plan) {
    constexpr int wide = sizeof(FftReal<T>) == sizeof(double) ? 1 : 0;
    const auto run = [&]<typename L>() { runOrPlan(CudaTemplateMatching3dImpl<T, L, wide>(algorithm), plan); };
    const VoxelTypes indexType = algorithm->outputIndexImage.get()->getDataType();
    using OwnIndexTypes = TypeList<std::uint8_t, std::uint16_t>;
    if (!visitVoxelType(indexType, OwnIndexTypes{}, run)) run.template operator()<std::uint32_t>();
}

}  // namespace

void runOnGpu(CudaTemplateMatching3d* algorithm, RunPlan* plan) {
    withInstance<double>(*algorithm, [&]<typename T>() { runMatching<T>(algorithm, plan); });
}

}  // namespace zel::cuda
