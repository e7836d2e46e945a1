#include <algorithm>

#include "CudaCrossCorrelation2dImpl.h"
#include "Kernels/FindPositionMaxiamalIntensity.h"
#include "Kernels/MeanIntensity.h"
#include "Kernels/MultiplyByConjugate.h"
#include "Kernels/RescaleIntensity.h"
#include "LocalMean_CUDA.h"
#include "Measurement_CUDA.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "WorkingImage_CUDA.h"

namespace zel::cuda {

namespace {

/// An image's memory on the device: its own, or a buffer of its size for the length of a run.
template <typename T>
struct DeviceSide {
    explicit DeviceSide(const ImageModel& image) : width(image.getDimension(0)), height(image.getDimension(1)) {
        if (image.isDeviceResident()) {
            // Written to only where the image is an output.
            data = const_cast<T*>(static_cast<const T*>(deviceDataPointerConst(&image, pitch)));
            return;
        }
        buffer.resize(width, height, true);
        data = buffer.data();
        pitch = buffer.pitch();
    }

    DeviceImage<T> buffer{0, 0, true};
    std::size_t width, height, pitch = 0;
    T* data = nullptr;
};

}  // namespace

template <typename T, int wide>
void CudaCrossCorrelation2dImpl<T, wide>::runWhole(const ImageModel& image, const ImageModel& templateImage, int mode,
                                                   ImageModel& output, cudaStream_t stream) {
    const std::uint64_t width = image.getDimension(0), height = image.getDimension(1);
    const std::uint64_t templateWidth = templateImage.getDimension(0), templateHeight = templateImage.getDimension(1);
    const std::uint64_t nx = nextFastFftSize(templateWidth - 1 + width);
    const std::uint64_t ny = nextFastFftSize(height - 1 + templateHeight);
    const std::uint64_t half = (nx >> 1) + 1;
    Measurement measurement(algorithm_->outputMeasurement);
    measurement.resize();

    DeviceImage<R> padded(nx, ny, false);
    R* const interior = offsetBytes(padded.data(), centreOffset_.y * padded.pitch() + centreOffset_.x * sizeof(R));
    placeImage<T>(image, interior, padded.pitch(), stream);
    fillOutsideRegion2d(padded.data(), padded.pitch(), centreOffset_.x, centreOffset_.y, width, height, nx, ny, R(0),
                        stream);

    const DeviceSide<T> pattern(templateImage);
    if (!templateImage.isDeviceResident()) {
        copyImageToDevice2d(templateImage, pattern.data, pattern.pitch, 0, 0, stream);
        endStep();
    }
    const DeviceSide<float> scores(output);
    const auto spectrumBytes = half * sizeof(Spectrum) * ny;
    const auto imageSpectrumMemory = allocateDeviceMemory(spectrumBytes);
    auto templateSpectrumMemory = allocateDeviceMemory(spectrumBytes);
    auto* const imageSpectrum = static_cast<Spectrum*>(imageSpectrumMemory.get());
    auto* const templateSpectrum = static_cast<Spectrum*>(templateSpectrumMemory.get());
    DeviceImage<R> paddedTemplate(nx, ny, false);
    convertAndPad2d(pattern.data, pattern.pitch, templateWidth, templateHeight, paddedTemplate.data(),
                    paddedTemplate.pitch(), nx, ny, R(0), stream);
    finishStep();

    if (mode == 1) {
        const auto means = allocateDeviceMemory(paddedTemplate.pitch() * height);
        auto* const localMeans = static_cast<R*>(means.get());
        computeLocalMean<R>(interior, padded.pitch(), width, height, 1, templateWidth, templateHeight, true, localMeans,
                            paddedTemplate.pitch(), stream);
        subtractImage(interior, padded.pitch(), localMeans, paddedTemplate.pitch(), interior, padded.pitch(), width,
                      height, 1, stream);
        finishStep();
        double mean = 0;
        meanIntensity(pattern.data, pattern.pitch, templateWidth, templateHeight, &mean, stream);
        subtractImageWithValue(paddedTemplate.data(), paddedTemplate.pitch(), static_cast<R>(mean),
                               paddedTemplate.data(), paddedTemplate.pitch(), templateWidth, templateHeight, 1, stream);
        endStep();
    }

    FftWorkArea workArea;
    FftPlan forward(makeFftPlan2d(ny, nx, RealFft<R>::forward, workArea, stream));
    forwardFft(forward.handle(), padded.data(), imageSpectrum);
    finishStep();
    forwardFft(forward.handle(), paddedTemplate.data(), templateSpectrum);
    finishStep();
    forward.destroy();

    const R scale = 1 / (static_cast<R>(ny) * static_cast<R>(nx));
    const std::uint64_t spectrumPitch = half * sizeof(Spectrum);
    multiplyByConjugateAndScale<R>(imageSpectrum, spectrumPitch, spectrumBytes, templateSpectrum, spectrumPitch,
                                   spectrumBytes, imageSpectrum, spectrumPitch, spectrumBytes, half, ny, 1, scale,
                                   stream);
    finishStep();
    templateSpectrumMemory.reset();

    FftPlan inverse(makeFftPlan2d(ny, nx, RealFft<R>::inverse, workArea, stream));
    inverseFft(inverse.handle(), imageSpectrum, padded.data());
    finishStep();
    inverse.destroy();

    PositionMaximalIntensityInfo best;
    findPositionMaximalIntensity(padded.data(), padded.pitch(), width, height, &best, stream);
    measurement.write(best);
    rescaleIntensity(padded.data(), padded.pitch(), padded.slicePitch(), scores.data, scores.pitch,
                     scores.pitch * height, width, height, 1, best.minimum, best.maximum, -1.0, 1.0, stream);
    finishStep();
    if (!output.isDeviceResident()) {
        copyDeviceToImage2d(scores.data, scores.pitch, output, 0, 0, stream);
        nextStep();
    }
}

/// When the spectra are being made, or before that, local means.
template <typename T, int wide>
std::uint64_t CudaCrossCorrelation2dImpl<T, wide>::wholeBytes() const {
    const ImageModel &image = *algorithm_->inputImage.get(), &pattern = *algorithm_->inputTemplate.get();
    const std::uint64_t width = image.getDimension(0), height = image.getDimension(1);
    const std::uint64_t templateWidth = pattern.getDimension(0), templateHeight = pattern.getDimension(1);
    const std::uint64_t nx = nextFastFftSize(templateWidth - 1 + width);
    const FftBytes<R> bytes(nx, nextFastFftSize(height - 1 + templateHeight), 1);
    std::uint64_t held = 2 * bytes.real + 2 * bytes.spectrum;
    if (!pattern.isDeviceResident()) held += templateWidth * templateHeight * sizeof(T);
    if (!algorithm_->outputImage.get()->isDeviceResident()) held += width * height * sizeof(float);
    if (algorithm_->correlationMode != 1) return held + bytes.forwardWork;
    return held + std::max(bytes.forwardWork,
                           nx * height * sizeof(R) + localMeanBytes<R>(width, height, templateWidth, templateHeight));
}

#define INSTANCE(NAME, CODE, T)                                                                                    \
    template void CudaCrossCorrelation2dImpl<T, std::is_same_v<FftReal<T>, double> ? 1 : 0>::runWhole(             \
        const ImageModel&, const ImageModel&, int, ImageModel&, cudaStream_t);                                     \
    template std::uint64_t CudaCrossCorrelation2dImpl<T, std::is_same_v<FftReal<T>, double> ? 1 : 0>::wholeBytes() \
        const;
ZEL_FOR_EACH_KERNEL_TYPE(INSTANCE)
#undef INSTANCE

}  // namespace zel::cuda
