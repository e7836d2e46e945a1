#include "ResetImage.h"

#include "OffsetBytes.h"
#include "RowLaunch.h"
#include "lanes.h"

namespace zel::cuda {

template <typename T>
__global__ void resetImage2dKernel(T* image, unsigned long long pitch, T value, unsigned long long width) {
    T* const row = offsetBytes(image, pitch * blockIdx.x);
    forEachColumn(width, [=](std::uint64_t x) { row[x] = value; });
}

template <typename T>
void resetImage(T* image, std::uint64_t pitch, std::uint64_t slicePitch, T value, std::uint64_t width,
                std::uint64_t height, std::uint64_t depth, cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        cudaLaunchKernelEx(&config, resetImage2dKernel<T>, offsetBytes(image, z * slicePitch), pitch, value, width);
    });
}

#define LAUNCHER(T)                                                                                            \
    template void resetImage(T*, std::uint64_t, std::uint64_t, T, std::uint64_t, std::uint64_t, std::uint64_t, \
                             cudaStream_t);
LAUNCHER(std::uint8_t)
LAUNCHER(std::uint16_t)
LAUNCHER(std::uint32_t)
LAUNCHER(float)
LAUNCHER(double)
#undef LAUNCHER

template __global__ void resetImage2dKernel(std::int8_t*, unsigned long long, std::int8_t, unsigned long long);
template __global__ void resetImage2dKernel(std::int16_t*, unsigned long long, std::int16_t, unsigned long long);
template __global__ void resetImage2dKernel(std::int32_t*, unsigned long long, std::int32_t, unsigned long long);

}  // namespace zel::cuda
