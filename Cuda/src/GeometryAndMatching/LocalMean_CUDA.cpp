#include "LocalMean_CUDA.h"

#include "ImageFiltering/FftUtilities_CUDA.h"
#include "ImageFiltering/RealFft.h"
#include "Kernels/ExtendImage.h"
#include "Kernels/MultiplyComplex.h"
#include "Kernels/ResetImage.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::cuda {

template <typename R>
void computeLocalMean(const R* src, std::uint64_t srcPitch, std::uint64_t width, std::uint64_t height, R kernelValue,
                      std::uint64_t kernelWidth, std::uint64_t kernelHeight, bool normalise, R* dst,
                      std::uint64_t dstPitch, cudaStream_t stream) {
    const std::uint64_t fullWidth = nextFastFftSize(width - 1 + kernelWidth);
    const std::uint64_t fullHeight = nextFastFftSize(kernelHeight - 1 + height);
    const std::uint64_t half = (fullWidth >> 1) + 1;
    DeviceImage<R> image(fullWidth, fullHeight, false);
    DeviceImage<R> window(fullWidth, fullHeight, false);
    DeviceImage<SpectrumOf<R>> imageSpectrum(half, fullHeight, false);
    DeviceImage<SpectrumOf<R>> windowSpectrum(half, fullHeight, false);

    extendImageWithMirror(src, srcPitch, width, height, image.data(), image.pitch(), kernelWidth >> 1,
                          kernelHeight >> 1, fullWidth, fullHeight, stream);
    resetImage(window.data(), window.pitch(), window.slicePitch(), kernelValue, kernelWidth, kernelHeight, 1, stream);
    fillOutsideRegion2d(window.data(), window.pitch(), kernelWidth, kernelHeight, fullWidth, fullHeight, R(0), stream);

    FftWorkArea workArea;
    FftPlan forward(makeFftPlan2d(fullHeight, fullWidth, RealFft<R>::forward, workArea, stream));
    forwardFft(forward.handle(), image.data(), imageSpectrum.data());
    checkCudaStatus(cudaDeviceSynchronize());
    forwardFft(forward.handle(), window.data(), windowSpectrum.data());
    checkCudaStatus(cudaDeviceSynchronize());
    forward.destroy();

    R scale = 1 / (static_cast<R>(fullHeight) * static_cast<R>(fullWidth));
    if (normalise) scale *= 1 / (static_cast<R>(kernelWidth) * static_cast<R>(kernelHeight));
    multiplyComplexAndScale<R>(imageSpectrum.data(), imageSpectrum.pitch(), imageSpectrum.slicePitch(),
                               windowSpectrum.data(), windowSpectrum.pitch(), windowSpectrum.slicePitch(),
                               imageSpectrum.data(), imageSpectrum.pitch(), imageSpectrum.slicePitch(), half,
                               fullHeight, 1, scale, stream);

    FftPlan inverse(makeFftPlan2d(fullHeight, fullWidth, RealFft<R>::inverse, workArea, stream));
    inverseFft(inverse.handle(), imageSpectrum.data(), image.data());
    checkCudaStatus(cudaDeviceSynchronize());
    inverse.destroy();

    const R* const means =
        offsetBytes(image.data(), (kernelHeight - 1) * image.pitch() + (kernelWidth - 1) * sizeof(R));
    checkCudaStatus(cudaMemcpy2DAsync(dst, dstPitch, means, image.pitch(), width * sizeof(R), height,
                                      cudaMemcpyDeviceToDevice, stream));
}

template <typename R>
std::uint64_t localMeanBytes(std::uint64_t width, std::uint64_t height, std::uint64_t kernelWidth,
                             std::uint64_t kernelHeight) {
    const FftBytes<R> bytes(nextFastFftSize(width - 1 + kernelWidth), nextFastFftSize(kernelHeight - 1 + height), 1);
    return 2 * bytes.real + 2 * bytes.spectrum + bytes.forwardWork;
}

#define INSTANCE(R)                                                                                         \
    template void computeLocalMean(const R*, std::uint64_t, std::uint64_t, std::uint64_t, R, std::uint64_t, \
                                   std::uint64_t, bool, R*, std::uint64_t, cudaStream_t);                   \
    template std::uint64_t localMeanBytes<R>(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t);
INSTANCE(float)
INSTANCE(double)
#undef INSTANCE

}  // namespace zel::cuda
