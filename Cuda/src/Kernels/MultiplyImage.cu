#include "MultiplyImage.h"

#include "BlockRow.h"
#include "RowLaunch.h"
#include "lanes.h"

namespace zel::cuda {

template <typename T, typename U>
__global__ void multiplyImageKernel(const T* a, unsigned long long aPitch, const U* b, unsigned long long bPitch,
                                    T* out, unsigned long long outPitch, unsigned long long width) {
    const T* const aRow = blockRow(a, aPitch);
    const U* const bRow = blockRow(b, bPitch);
    T* const outRow = blockRow(out, outPitch);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = aRow[x] * bRow[x]; });
}

template <typename T, typename U>
__global__ void multiplyImageInsituKernel(T* a, unsigned long long aPitch, const U* b, unsigned long long bPitch,
                                          unsigned long long width) {
    T* const aRow = blockRow(a, aPitch);
    const U* const bRow = blockRow(b, bPitch);
    forEachColumn(width, [=](std::uint64_t x) { aRow[x] = aRow[x] * bRow[x]; });
}

template <typename T>
void multiplyImage(const T* a, std::uint64_t aPitch, std::uint64_t aSlicePitch, const T* b, std::uint64_t bPitch,
                   std::uint64_t bSlicePitch, T* out, std::uint64_t outPitch, std::uint64_t outSlicePitch,
                   std::uint64_t width, std::uint64_t height, std::uint64_t depth, cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        const T* const aSlice = offsetBytes(a, z * aSlicePitch);
        const T* const bSlice = offsetBytes(b, z * bSlicePitch);
        T* const outSlice = offsetBytes(out, z * outSlicePitch);
        if (outSlice == aSlice)
            cudaLaunchKernelEx(&config, multiplyImageInsituKernel<T, T>, outSlice, aPitch, bSlice, bPitch, width);
        else
            cudaLaunchKernelEx(&config, multiplyImageKernel<T, T>, aSlice, aPitch, bSlice, bPitch, outSlice, outPitch,
                               width);
    });
}

#define LAUNCHER(T)                                                                                                 \
    template void multiplyImage(const T*, std::uint64_t, std::uint64_t, const T*, std::uint64_t, std::uint64_t, T*, \
                                std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,          \
                                cudaStream_t);
LAUNCHER(float)
LAUNCHER(double)
#undef LAUNCHER

template __global__ void multiplyImageKernel(const double*, unsigned long long, const float*, unsigned long long,
                                             double*, unsigned long long, unsigned long long);
template __global__ void multiplyImageInsituKernel(double*, unsigned long long, const float*, unsigned long long,
                                                   unsigned long long);

}  // namespace zel::cuda
