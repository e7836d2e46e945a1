#include <algorithm>
#include <limits>

#include "CorrelationTile.h"
#include "CudaCrossCorrelation2dImpl.h"
#include "Kernels/FindPositionMaxiamalIntensity.h"
#include "Kernels/MeanIntensity.h"
#include "Kernels/MultiplyByConjugate.h"
#include "LocalMean_CUDA.h"
#include "Measurement_CUDA.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "WorkingImage_CUDA.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/children/RescaleIntensity.h"

namespace zel::cuda {

namespace {

/// A rectangle of an image; read-only where the image is.
template <typename Image>
ImageModelSizeProxy rectangleOf(Image& image, std::uint64_t x, std::uint64_t width, std::uint64_t y,
                                std::uint64_t height) {
    return {&image, x, width, y, height, 0, 1, 0, 1, 0, 1};
}

template <typename R>
R* pixelAt(DeviceImage<R>& image, std::uint64_t x, std::uint64_t y) {
    return offsetBytes(image.data(), y * image.pitch() + x * sizeof(R));
}

/// Merges the extrema of one tile's scores. Of equal maxima the earlier tile's is kept.
void addTile(PositionMaximalIntensityInfo& all, const PositionMaximalIntensityInfo& part, std::uint64_t x,
             std::uint64_t y) {
    if (part.maximum > all.maximum) {
        all.maximum = part.maximum;
        all.positionX = x + part.positionX;
        all.positionY = y + part.positionY;
    }
    all.minimum = std::min(all.minimum, part.minimum);
}

}  // namespace

template <typename T, int wide>
void CudaCrossCorrelation2dImpl<T, wide>::runTiled(const ImageModel& image, const ImageModel& templateImage, int mode,
                                                   ImageModel& output, cudaStream_t stream) {
    const std::uint64_t templateWidth = templateImage.getDimension(0), templateHeight = templateImage.getDimension(1);
    const bool removesMeans = mode != 0;
    const CorrelationAxis alongX{image.getDimension(0), centreOffset_.x, trailingOffset_.x, removesMeans};
    const CorrelationAxis alongY{image.getDimension(1), centreOffset_.y, trailingOffset_.y, removesMeans};

    // No block is larger than the first one.
    const auto firstBlock = cutter_->getBlockSize(0, 0, 0);
    const std::uint64_t nx = nextFastFftSize(firstBlock.x), ny = nextFastFftSize(firstBlock.y);
    const std::uint64_t half = (nx >> 1) + 1;

    DeviceImage<R> paddedTemplate(nx, ny, false);
    placeImage<T>(templateImage, paddedTemplate.data(), paddedTemplate.pitch(), stream);
    fillOutsideRegion2d(paddedTemplate.data(), paddedTemplate.pitch(), templateWidth, templateHeight, nx, ny, R(0),
                        stream);
    endStep();
    if (removesMeans) {
        double mean = 0;
        meanIntensity(paddedTemplate.data(), paddedTemplate.pitch(), templateWidth, templateHeight, &mean, stream);
        subtractImageWithValue(paddedTemplate.data(), paddedTemplate.pitch(), static_cast<R>(mean),
                               paddedTemplate.data(), paddedTemplate.pitch(), templateWidth, templateHeight, 1, stream);
    }

    FftWorkArea workArea;
    FftPlan forward(makeFftPlan2d(ny, nx, RealFft<R>::forward, workArea, stream));
    FftPlan inverse(makeFftPlan2d(ny, nx, RealFft<R>::inverse, workArea, stream));
    DeviceImage<Spectrum> templateSpectrum(half, ny, false);
    forwardFft(forward.handle(), paddedTemplate.data(), templateSpectrum.data());
    checkCudaStatus(cudaDeviceSynchronize());
    paddedTemplate.clear();
    endStep();

    DeviceImage<R> tile(nx, ny, false);
    DeviceImage<Spectrum> tileSpectrum(half, ny, false);
    DeviceImage<R> localMeans(removesMeans ? nx : 0, removesMeans ? ny : 0, false);
    const R scale = 1 / (static_cast<R>(ny) * static_cast<R>(nx));
    PositionMaximalIntensityInfo best{0, 0, std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest()};

    const auto blocks = cutter_->getNumOfBlocks();
    for (unsigned j = 0; j < blocks.y; ++j) {
        for (unsigned i = 0; i < blocks.x; ++i) {
            const auto origin = cutter_->getBlockOrigin(i, j, 0), size = cutter_->getBlockSize(i, j, 0);
            const CorrelationBlock blockX{origin.x, size.x}, blockY{origin.y, size.y};
            const auto windowX = alongX.windowOf(blockX), windowY = alongY.windowOf(blockY);
            R* const interior = pixelAt(tile, windowX.target, windowY.target);
            placeImage<T>(rectangleOf(image, windowX.start, windowX.size, windowY.start, windowY.size), interior,
                          tile.pitch(), stream);
            fillOutsideRegion2d(tile.data(), tile.pitch(), windowX.target, windowY.target, windowX.size, windowY.size,
                                nx, ny, R(0), stream);
            finishStep();
            if (removesMeans) {
                computeLocalMean<R>(interior, tile.pitch(), windowX.size, windowY.size, 1, templateWidth,
                                    templateHeight, true, localMeans.data(), localMeans.pitch(), stream);
                subtractImage(interior, tile.pitch(), localMeans.data(), localMeans.pitch(), interior, tile.pitch(),
                              windowX.size, windowY.size, 1, stream);
                finishStep();
            }
            forwardFft(forward.handle(), tile.data(), tileSpectrum.data());
            finishStep();
            multiplyByConjugateAndScale<R>(tileSpectrum.data(), tileSpectrum.pitch(), tileSpectrum.slicePitch(),
                                           templateSpectrum.data(), templateSpectrum.pitch(),
                                           templateSpectrum.slicePitch(), tileSpectrum.data(), tileSpectrum.pitch(),
                                           tileSpectrum.slicePitch(), half, ny, 1, scale, stream);
            finishStep();
            inverseFft(inverse.handle(), tileSpectrum.data(), tile.data());
            finishStep();

            const auto partX = alongX.usablePartOf(blockX), partY = alongY.usablePartOf(blockY);
            const R* const part = pixelAt(tile, partX.skip, partY.skip);
            PositionMaximalIntensityInfo found;
            findPositionMaximalIntensity(part, tile.pitch(), partX.size, partY.size, &found, stream);
            addTile(best, found, partX.start, partY.start);
            ImageModelSizeProxy target = rectangleOf(output, partX.start, partX.size, partY.start, partY.size);
            storeImage(part, tile.pitch(), target, stream);
            endStep();
        }
    }
    forward.destroy();
    inverse.destroy();

    Measurement measurement(algorithm_->outputMeasurement);
    measurement.resize();
    measurement.write(best);
    const auto rescale = RescaleIntensity::New(this);
    rescale->inputImage = &output;
    rescale->inputRangeChoice = 1;
    rescale->inputRange = Vector2<double>{best.minimum, best.maximum};
    rescale->outputRange = Vector2<double>{-1, 1};
    rescale->outputTypeChoice = 16;
    rescale->outputImage = &output;
    runChildAlgo(rescale.get());
}

/// While a tile is being correlated. Where means are removed, those of the largest part of the image come on top.
template <typename T, int wide>
std::uint64_t CudaCrossCorrelation2dImpl<T, wide>::tiledBytes() const {
    const ImageModel &image = *algorithm_->inputImage.get(), &pattern = *algorithm_->inputTemplate.get();
    const auto blocks = cutter_->getNumOfBlocks(), size = cutter_->getBlockSize(0, 0, 0);
    const FftBytes<R> bytes(nextFastFftSize(size.x), nextFastFftSize(size.y), 1);
    const std::uint64_t held = bytes.real + 2 * bytes.spectrum + bytes.forwardWork;
    if (algorithm_->correlationMode == 0) return held;

    const CorrelationAxis alongX{image.getDimension(0), centreOffset_.x, trailingOffset_.x, true};
    const CorrelationAxis alongY{image.getDimension(1), centreOffset_.y, trailingOffset_.y, true};
    std::uint64_t width = 0, height = 0;
    for (unsigned i = 0; i < blocks.x; ++i) {
        const CorrelationBlock block{cutter_->getBlockOrigin(i, 0, 0).x, cutter_->getBlockSize(i, 0, 0).x};
        width = std::max(width, alongX.windowOf(block).size);
    }
    for (unsigned j = 0; j < blocks.y; ++j) {
        const CorrelationBlock block{cutter_->getBlockOrigin(0, j, 0).y, cutter_->getBlockSize(0, j, 0).y};
        height = std::max(height, alongY.windowOf(block).size);
    }
    return held + bytes.real + localMeanBytes<R>(width, height, pattern.getDimension(0), pattern.getDimension(1));
}

#define INSTANCE(NAME, CODE, T)                                                                                    \
    template void CudaCrossCorrelation2dImpl<T, std::is_same_v<FftReal<T>, double> ? 1 : 0>::runTiled(             \
        const ImageModel&, const ImageModel&, int, ImageModel&, cudaStream_t);                                     \
    template std::uint64_t CudaCrossCorrelation2dImpl<T, std::is_same_v<FftReal<T>, double> ? 1 : 0>::tiledBytes() \
        const;
ZEL_FOR_EACH_KERNEL_TYPE(INSTANCE)
#undef INSTANCE

}  // namespace zel::cuda
