#include "ResetImage.h"

#include "BlockRow.h"
#include "RowLaunch.h"
#include "lanes.h"
#include "zel/VoxelTypes.h"

namespace zel::cuda {

template <typename T>
__global__ void resetImage2dKernel(T* image, unsigned long long pitch, T value, unsigned long long width) {
    T* const row = blockRow(image, pitch);
    forEachColumn(width, [=](std::uint64_t x) { row[x] = value; });
}

template <typename T>
void resetImage(T* image, std::uint64_t pitch, std::uint64_t slicePitch, T value, std::uint64_t width,
                std::uint64_t height, std::uint64_t depth, cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        cudaLaunchKernelEx(&config, resetImage2dKernel<T>, offsetBytes(image, z * slicePitch), pitch, value, width);
    });
}

#define LAUNCHER(NAME, CODE, T)                                                                                \
    template void resetImage(T*, std::uint64_t, std::uint64_t, T, std::uint64_t, std::uint64_t, std::uint64_t, \
                             cudaStream_t);
ZEL_FOR_EACH_KERNEL_TYPE(LAUNCHER)
#undef LAUNCHER

}  // namespace zel::cuda
