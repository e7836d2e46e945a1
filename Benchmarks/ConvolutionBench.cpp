#include <cstdint>

#include "CaseSizes.h"
#include "Comparison.h"
#include "ImageFiltering/GaussianKernel_CUDA.h"
#include "Kernels/CudaConvolution1d.h"
#include "Kernels/ResetImage.h"
#include "MemoryCopy.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::bench {

namespace {

constexpr ImageSize size{256, 256, 256};

template <typename T>
std::shared_ptr<cuda::DeviceImage<T>> touchedVolume() {
    auto volume = std::make_shared<cuda::DeviceImage<T>>(size.x, size.y, size.z, true);
    cuda::resetImage(volume->data(), volume->pitch(), volume->slicePitch(), T(1), size.x, size.y, size.z, nullptr);
    cuda::checkCudaStatus(cudaDeviceSynchronize());
    return volume;
}

/// What the three functions need beside the volumes.
struct Kernel {
    std::shared_ptr<void> taps;
    std::uint64_t tapCount = 0;
    unsigned maxBlocks = 0;
    unsigned maxThreads = 0;
};

Kernel makeKernel(double sigma) {
    Kernel kernel;
    kernel.taps =
        cuda::uploadGaussianKernel(nullptr, sigma, 4, filtering::linear::KernelDirection3D::x, kernel.tapCount);
    cuda::getDeviceCoreInfo(0, kernel.maxBlocks, kernel.maxThreads);
    return kernel;
}

/// The three passes of the Gaussian filter, each by itself.
template <typename T>
Comparison passes(double sigma) {
    const auto source = touchedVolume<T>();
    const auto target = touchedVolume<T>();
    const Kernel kernel = makeKernel(sigma);
    const auto pass = [=](auto convolution, const auto& from) {
        return [=] {
            convolution(from->data(), from->pitch(), from->slicePitch(), target->data(), target->pitch(),
                        target->slicePitch(), size.x, size.y, size.z, static_cast<const float*>(kernel.taps.get()),
                        kernel.tapCount, nullptr, kernel.maxBlocks, kernel.maxThreads);
            cuda::checkCudaStatus(cudaGetLastError());
            cuda::checkCudaStatus(cudaDeviceSynchronize());
        };
    };
    const double bytes = 2 * voxelCount(size) * sizeof(T);
    return {{memoryCopyPeer(bytes)},
            bytes,
            {{"x", pass(cuda::convolution1dOnRows<T, T>, source)},
             {"y in place", pass(cuda::convolution1dOnColumns<T, T>, target)},
             {"z", pass(cuda::convolution1dOnZLines<T, T>, source)}}};
}

}  // namespace

void addConvolutionCases(Comparisons& comparisons) {
    for (const int sigma : {1, 3}) {
        const std::string suffix = ' ' + std::to_string(8 * sigma + 1) + " taps " + sizeText(size);
        comparisons.add("convolve float" + suffix, [=] { return passes<float>(sigma); });
        comparisons.add("convolve u16" + suffix, [=] { return passes<std::uint16_t>(sigma); });
    }
}

}  // namespace zel::bench
