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

    std::uint64_t blocks = 1;
    if (algorithm_->tilingMode == 1) {
        const Vector2<unsigned> tile = algorithm_->tileSize;
        const auto extended = [&](int axis) {
            return static_cast<unsigned>(image.getDimension(axis) - 1 + templateImage.getDimension(axis));
        };
        blocks = BlockCutterManager::allocateAndInitialize(cutter_, {extended(0), extended(1), 1}, {tile.x, tile.y, 1},
                                                           {1, 1, 1}, previousOverlap_, nextOverlap_);
    }
    if (blocks > 1) {
        setNumberOfSteps((mode == 1 ? 6 : 5) * blocks + 7);
        runTiled(image, templateImage, mode, output, context->hStream);
        return;
    }
    std::uint64_t steps = mode == 1 ? 8 : 6;
    for (const ImageModel* const transferred : {&image, &templateImage, const_cast<const ImageModel*>(&output)})
        steps += transferred->isDeviceResident() ? 0 : 1;
    setNumberOfSteps(steps);
    runWhole(image, templateImage, mode, output, context->hStream);
}

void runOnGpu(CudaCrossCorrelation2d* algorithm) {
    withInstance<double>(*algorithm, [&]<typename T>() {
        CudaCrossCorrelation2dImpl<T, std::is_same_v<FftReal<T>, double> ? 1 : 0>(algorithm).run();
    });
}

}  // namespace zel::cuda
