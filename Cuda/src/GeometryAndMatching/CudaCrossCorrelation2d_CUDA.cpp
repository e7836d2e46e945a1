#include "CudaCrossCorrelation2dImpl.h"
#include "Runners/CudaRunners_CUDA.h"
#include "Runners/InstanceChoice_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"

namespace zel::cuda {

template <typename T, int wide>
CudaCrossCorrelation2dImpl<T, wide>::CudaCrossCorrelation2dImpl(CudaCrossCorrelation2d* algorithm)
    : AbstractPrivateImplementation(algorithm), algorithm_(algorithm) {
    const ImageModel& templateImage = *algorithm->inputTemplate.get();
    const auto width = static_cast<unsigned>(templateImage.getDimension(0));
    const auto height = static_cast<unsigned>(templateImage.getDimension(1));
    centreOffset_ = {(width - 1) >> 1, (height - 1) >> 1, 0};
    trailingOffset_ = {width - centreOffset_.x - 1, height - centreOffset_.y - 1, 0};
    // Local means need the pixels around those that a score needs.
    const unsigned windows = algorithm->correlationMode != 0 ? 2 : 1;
    previousOverlap_ = {centreOffset_.x * windows, centreOffset_.y * windows, 0};
    nextOverlap_ = {trailingOffset_.x * windows, trailingOffset_.y * windows, 0};
}

template <typename T, int wide>
void CudaCrossCorrelation2dImpl<T, wide>::run() {
    const ImageModel& image = *algorithm_->inputImage.get();
    const ImageModel& templateImage = *algorithm_->inputTemplate.get();
    const int mode = algorithm_->correlationMode;
    ImageModel& output = *algorithm_->outputImage.get();
    CudaContext* const cudaContext = algorithm_->cudaContext;

    const auto context = makeNppStreamContext(cudaContext);
    const auto gpu = cudaContext != nullptr ? makeChangeCurrentGpu(context->nCudaDeviceId) : nullptr;

    const std::uint64_t tiles = cut();
    setNumberOfSteps(stepCount(tiles));
    if (tiles > 1) {
        runTiled(image, templateImage, mode, output, context->hStream);
    } else {
        runWhole(image, templateImage, mode, output, context->hStream);
    }
}

template <typename T, int wide>
RunPlan CudaCrossCorrelation2dImpl<T, wide>::plan() {
    const std::uint64_t tiles = cut();
    const ImageModel& image = *algorithm_->inputImage.get();
    if (tiles > 1) return {stepCount(tiles), cutter_->getNumOfBlocks(), cutter_->getBlockSize(0, 0, 0), tiledBytes()};
    const Vector3<unsigned> size{static_cast<unsigned>(image.getDimension(0)),
                                 static_cast<unsigned>(image.getDimension(1)), 1};
    return {.steps = stepCount(tiles), .tileSize = size, .peakBytes = wholeBytes()};
}

template <typename T, int wide>
std::uint64_t CudaCrossCorrelation2dImpl<T, wide>::cut() {
    if (algorithm_->tilingMode != 1) return 1;
    const Vector2<unsigned> tile = algorithm_->tileSize;
    const auto extended = [&](int axis) {
        return static_cast<unsigned>(algorithm_->inputImage.get()->getDimension(axis) - 1 +
                                     algorithm_->inputTemplate.get()->getDimension(axis));
    };
    return BlockCutterManager::allocateAndInitialize(cutter_, {extended(0), extended(1), 1}, {tile.x, tile.y, 1},
                                                     {1, 1, 1}, previousOverlap_, nextOverlap_);
}

template <typename T, int wide>
std::uint64_t CudaCrossCorrelation2dImpl<T, wide>::stepCount(std::uint64_t tiles) const {
    const bool removesMeans = algorithm_->correlationMode == 1;
    if (tiles > 1) return (removesMeans ? 6 : 5) * tiles + 7;
    std::uint64_t steps = removesMeans ? 8 : 6;
    const ImageModel* const output = algorithm_->outputImage;
    for (const ImageModel* const transferred : {algorithm_->inputImage.get(), algorithm_->inputTemplate.get(), output})
        steps += transferred->isDeviceResident() ? 0 : 1;
    return steps;
}

void runOnGpu(CudaCrossCorrelation2d* algorithm, RunPlan* plan) {
    withInstance<double>(*algorithm, [&]<typename T>() {
        constexpr int wide = std::is_same_v<FftReal<T>, double> ? 1 : 0;
        runOrPlan(CudaCrossCorrelation2dImpl<T, wide>(algorithm), plan);
    });
}

}  // namespace zel::cuda
