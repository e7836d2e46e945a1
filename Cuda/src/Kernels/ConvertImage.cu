#include "ConvertImage.h"

#include <array>
#include <cmath>
#include <tuple>
#include <type_traits>

#include "BlockRow.h"
#include "FloatToInteger.h"
#include "RowLaunch.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "lanes.h"
#include "zel/VoxelTypes.h"

namespace zel::cuda {

namespace {

template <typename T>
constexpr bool isComplex = std::is_same_v<T, float2> || std::is_same_v<T, double2>;

template <RoundMode mode, typename T>
__device__ __forceinline__ T roundToWhole(T value) {
    if constexpr (mode == RoundMode::NearestEven) return std::rint(value);
    if constexpr (mode == RoundMode::HalfUp) return std::floor(value + T(0.5));
    if constexpr (mode == RoundMode::Up) return std::ceil(value);
    if constexpr (mode == RoundMode::Down) return std::floor(value);
    return value;  // the conversion itself truncates
}

template <typename To, RoundMode mode, typename From>
__device__ __forceinline__ To convertPixel(From value) {
    if constexpr (isComplex<From>) {
        using Part = decltype(To::x);
        return To{static_cast<Part>(value.x), static_cast<Part>(value.y)};
    } else if constexpr (isComplex<To>) {
        return To{static_cast<decltype(To::x)>(value), 0};
    } else if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        return truncateTo<To>(roundToWhole<mode>(value));
    } else {
        return static_cast<To>(value);
    }
}

}  // namespace

template <typename From, typename To, RoundMode mode>
__global__ void convertImage2dKernel(const From* src, unsigned long long srcPitch, To* dst, unsigned long long dstPitch,
                                     unsigned long long width) {
    const From* const srcRow = blockRow(src, srcPitch);
    To* const dstRow = blockRow(dst, dstPitch);
    forEachColumn(width, [=](std::uint64_t x) { dstRow[x] = convertPixel<To, mode>(srcRow[x]); });
}

template <typename From, typename To>
void convertImage(const From* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, To* dst, std::uint64_t dstPitch,
                  std::uint64_t dstSlicePitch, std::uint64_t width, std::uint64_t height, std::uint64_t depth,
                  RoundMode mode, cudaStream_t stream) {
    if (mode > RoundMode::Down) return;
    if constexpr (std::is_same_v<From, To>) {
        copyDeviceVolume(src, srcPitch, srcSlicePitch, dst, dstPitch, dstSlicePitch, width, height, depth, stream);
    } else {
        const auto launchWith = [&](auto kernel) {
            launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
                cudaLaunchKernelEx(&config, kernel, offsetBytes(src, z * srcSlicePitch), srcPitch,
                                   offsetBytes(dst, z * dstSlicePitch), dstPitch, width);
            });
        };
        switch (mode) {
            case RoundMode::NearestEven:
                return launchWith(convertImage2dKernel<From, To, RoundMode::NearestEven>);
            case RoundMode::HalfUp:
                return launchWith(convertImage2dKernel<From, To, RoundMode::HalfUp>);
            case RoundMode::TowardZero:
                return launchWith(convertImage2dKernel<From, To, RoundMode::TowardZero>);
            case RoundMode::Up:
                return launchWith(convertImage2dKernel<From, To, RoundMode::Up>);
            case RoundMode::Down:
                return launchWith(convertImage2dKernel<From, To, RoundMode::Down>);
        }
    }
}

#define LAUNCHER(FROM, TO)                                                                                   \
    template void convertImage(const FROM*, std::uint64_t, std::uint64_t, TO*, std::uint64_t, std::uint64_t, \
                               std::uint64_t, std::uint64_t, std::uint64_t, RoundMode, cudaStream_t);
LAUNCHER(std::int8_t, float)
LAUNCHER(std::uint8_t, float)
LAUNCHER(std::int16_t, float)
LAUNCHER(std::uint16_t, float)
LAUNCHER(std::int32_t, double)
LAUNCHER(std::uint32_t, double)
LAUNCHER(double, float)
LAUNCHER(float, float)
LAUNCHER(double, double)
#undef LAUNCHER

namespace {

template <typename From, typename To>
constexpr auto kernelsBetween() {
    if constexpr (std::is_same_v<From, To>) {
        return nullptr;
    } else {
        return std::array{
            &convertImage2dKernel<From, To, RoundMode::NearestEven>, &convertImage2dKernel<From, To, RoundMode::HalfUp>,
            &convertImage2dKernel<From, To, RoundMode::TowardZero>, &convertImage2dKernel<From, To, RoundMode::Up>,
            &convertImage2dKernel<From, To, RoundMode::Down>};
    }
}

}  // namespace

/// Makes the instances that no launcher reaches.
template <typename From, typename... To>
auto makeKernelsFrom(TypeList<To...>) {
    return std::tuple{kernelsBetween<From, To>()..., &convertImage2dKernel<From, float2, RoundMode::TowardZero>,
                      &convertImage2dKernel<From, double2, RoundMode::TowardZero>};
}
#define KERNELS(NAME, CODE, FROM) template auto makeKernelsFrom<FROM>(KernelTypes);
ZEL_FOR_EACH_KERNEL_TYPE(KERNELS)
#undef KERNELS
template __global__ void convertImage2dKernel<float2, double2, RoundMode::TowardZero>(const float2*, unsigned long long,
                                                                                      double2*, unsigned long long,
                                                                                      unsigned long long);
template __global__ void convertImage2dKernel<double2, float2, RoundMode::TowardZero>(const double2*,
                                                                                      unsigned long long, float2*,
                                                                                      unsigned long long,
                                                                                      unsigned long long);

}  // namespace zel::cuda
