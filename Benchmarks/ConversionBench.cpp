#include <memory>

#include "CaseSizes.h"
#include "Comparison.h"
#include "Kernels/ConvertImage.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "Kernels/ResetImage.h"
#include "Kernels/RowLaunch.h"
#include "MemoryCopy.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::bench {

namespace {

/// An image on the device that was touched.
template <typename T>
std::shared_ptr<cuda::DeviceImage<T>> deviceImage(const ImageSize& size) {
    auto image = std::make_shared<cuda::DeviceImage<T>>(size.x, size.y, size.z, true);
    cuda::resetImage(image->data(), image->pitch(), image->slicePitch(), T(1), size.x, size.y, size.z, nullptr);
    cuda::checkCudaStatus(cudaDeviceSynchronize());
    return image;
}

template <typename From, typename To>
std::function<void()> converted(const ImageSize& size) {
    const auto src = deviceImage<From>(size);
    const auto dst = deviceImage<To>(size);
    return [=] {
        cuda::convertImage<From, To>(src->data(), src->pitch(), src->slicePitch(), dst->data(), dst->pitch(),
                                     dst->slicePitch(), size.x, size.y, size.z, cuda::RoundMode::NearestEven, nullptr);
        cuda::checkCudaStatus(cudaDeviceSynchronize());
    };
}

/// Of this pair only the kernel is there.
std::function<void()> convertedToDouble(const ImageSize& size) {
    const auto src = deviceImage<float>(size);
    const auto dst = deviceImage<double>(size);
    return [=] {
        cuda::launchRowsPerSlice(size.y, size.z, nullptr, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
            cudaLaunchKernelEx(&config, cuda::convertImage2dKernel<float, double, cuda::RoundMode::NearestEven>,
                               cuda::offsetBytes(src->data(), z * src->slicePitch()), src->pitch(),
                               cuda::offsetBytes(dst->data(), z * dst->slicePitch()), dst->pitch(), size.x);
        });
        cuda::checkCudaStatus(cudaDeviceSynchronize());
    };
}

template <typename T>
std::function<void()> reset(const ImageSize& size) {
    const auto image = deviceImage<T>(size);
    return [=] {
        cuda::resetImage(image->data(), image->pitch(), image->slicePitch(), T(3), size.x, size.y, size.z, nullptr);
        cuda::checkCudaStatus(cudaDeviceSynchronize());
    };
}

/// As many pixels in slices of 64 x 64 and in one.
Comparison manySlices() {
    constexpr ImageSize slices{64, 64, 64}, image{512, 512};
    return {{{"one image", converted<std::uint16_t, float>(image), nullptr}},
            voxelCount(image) * 6,
            {{"64 slices", converted<std::uint16_t, float>(slices)}}};
}

}  // namespace

void addConversionCases(Comparisons& comparisons) {
    for (const ImageSize& size : memorySizes) {
        const auto add = [&](const std::string& name, double bytesPerVoxel, auto make, bool isFill = false) {
            comparisons.add(name + ' ' + sizeText(size), [=] {
                const double bytes = bytesPerVoxel * voxelCount(size);
                Comparison comparison{{memoryCopyPeer(bytes)}, bytes, {{"row kernel", make(size)}}};
                if (isFill) comparison.ours.push_back(memoryFill(bytes));
                return comparison;
            });
        };
        add("convert u8 to float", 5, converted<std::uint8_t, float>);
        add("convert u16 to float", 6, converted<std::uint16_t, float>);
        add("convert float to double", 12, convertedToDouble);
        add("reset u8", 1, reset<std::uint8_t>, true);
        add("reset float", 4, reset<float>, true);
    }
    comparisons.add("convert u16 to float, 64x64", manySlices);
}

}  // namespace zel::bench
