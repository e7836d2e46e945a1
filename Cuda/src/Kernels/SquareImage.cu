#include "SquareImage.h"

#include "BlockRow.h"
#include "RowLaunch.h"
#include "lanes.h"

namespace zel::cuda {

template <typename T>
__global__ void squareImageKernel(const T* in, unsigned long long inPitch, T* out, unsigned long long outPitch,
                                  unsigned long long width) {
    const T* const inRow = blockRow(in, inPitch);
    T* const outRow = blockRow(out, outPitch);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = inRow[x] * inRow[x]; });
}

template <typename T>
__global__ void squareImageInsituKernel(T* image, unsigned long long pitch, unsigned long long width) {
    T* const row = blockRow(image, pitch);
    forEachColumn(width, [=](std::uint64_t x) { row[x] = row[x] * row[x]; });
}

template <typename T>
void squareImage(const T* in, std::uint64_t inPitch, std::uint64_t inSlicePitch, T* out, std::uint64_t outPitch,
                 std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height, std::uint64_t depth,
                 cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        const T* const inSlice = offsetBytes(in, z * inSlicePitch);
        T* const outSlice = offsetBytes(out, z * outSlicePitch);
        if (outSlice == inSlice)
            cudaLaunchKernelEx(&config, squareImageInsituKernel<T>, outSlice, inPitch, width);
        else
            cudaLaunchKernelEx(&config, squareImageKernel<T>, inSlice, inPitch, outSlice, outPitch, width);
    });
}

#define LAUNCHER(T)                                                                                                    \
    template void squareImage(const T*, std::uint64_t, std::uint64_t, T*, std::uint64_t, std::uint64_t, std::uint64_t, \
                              std::uint64_t, std::uint64_t, cudaStream_t);
LAUNCHER(float)
LAUNCHER(double)
#undef LAUNCHER

}  // namespace zel::cuda
