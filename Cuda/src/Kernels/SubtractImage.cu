#include "SubtractImage.h"

#include "BlockRow.h"
#include "RowLaunch.h"
#include "lanes.h"

namespace zel::cuda {

template <typename T>
__global__ void subtractImageKernel(const T* a, unsigned long long aPitch, const T* b, unsigned long long bPitch,
                                    T* out, unsigned long long outPitch, unsigned long long width) {
    const T *const aRow = blockRow(a, aPitch), *const bRow = blockRow(b, bPitch);
    T* const outRow = blockRow(out, outPitch);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = aRow[x] - bRow[x]; });
}

template <typename T>
__global__ void subtractImageInsitu1Kernel(T* a, unsigned long long aPitch, const T* b, unsigned long long bPitch,
                                           unsigned long long width) {
    T* const aRow = blockRow(a, aPitch);
    const T* const bRow = blockRow(b, bPitch);
    forEachColumn(width, [=](std::uint64_t x) { aRow[x] = aRow[x] - bRow[x]; });
}

template <typename T>
__global__ void subtractImageInsitu2Kernel(const T* a, unsigned long long aPitch, T* b, unsigned long long bPitch,
                                           unsigned long long width) {
    const T* const aRow = blockRow(a, aPitch);
    T* const bRow = blockRow(b, bPitch);
    forEachColumn(width, [=](std::uint64_t x) { bRow[x] = aRow[x] - bRow[x]; });
}

template <typename T>
__global__ void subtractImageWithValueKernel(const T* in, unsigned long long inPitch, T value, T* out,
                                             unsigned long long outPitch, unsigned long long width) {
    const T* const inRow = blockRow(in, inPitch);
    T* const outRow = blockRow(out, outPitch);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = inRow[x] - value; });
}

template <typename T>
__global__ void subtractImageWithValueInsituKernel(T* image, unsigned long long pitch, T value,
                                                   unsigned long long width) {
    T* const row = blockRow(image, pitch);
    forEachColumn(width, [=](std::uint64_t x) { row[x] = row[x] - value; });
}

template <typename T>
void subtractImage(const T* a, std::uint64_t aPitch, const T* b, std::uint64_t bPitch, T* out, std::uint64_t outPitch,
                   std::uint64_t width, std::uint64_t height, std::uint64_t depth, cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        const T* const aSlice = offsetBytes(a, z * aPitch * height);
        const T* const bSlice = offsetBytes(b, z * bPitch * height);
        T* const outSlice = offsetBytes(out, z * outPitch * height);
        if (outSlice == aSlice)
            cudaLaunchKernelEx(&config, subtractImageInsitu1Kernel<T>, outSlice, aPitch, bSlice, bPitch, width);
        else if (outSlice == bSlice)
            cudaLaunchKernelEx(&config, subtractImageInsitu2Kernel<T>, aSlice, aPitch, outSlice, bPitch, width);
        else
            cudaLaunchKernelEx(&config, subtractImageKernel<T>, aSlice, aPitch, bSlice, bPitch, outSlice, outPitch,
                               width);
    });
}

template <typename T>
void subtractImageWithValue(const T* in, std::uint64_t inPitch, T value, T* out, std::uint64_t outPitch,
                            std::uint64_t width, std::uint64_t height, std::uint64_t depth, cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        const T* const inSlice = offsetBytes(in, z * inPitch * height);
        T* const outSlice = offsetBytes(out, z * outPitch * height);
        if (outSlice == inSlice)
            cudaLaunchKernelEx(&config, subtractImageWithValueInsituKernel<T>, outSlice, inPitch, value, width);
        else
            cudaLaunchKernelEx(&config, subtractImageWithValueKernel<T>, inSlice, inPitch, value, outSlice, outPitch,
                               width);
    });
}

#define LAUNCHERS(T)                                                                                                  \
    template void subtractImage(const T*, std::uint64_t, const T*, std::uint64_t, T*, std::uint64_t, std::uint64_t,   \
                                std::uint64_t, std::uint64_t, cudaStream_t);                                          \
    template void subtractImageWithValue(const T*, std::uint64_t, T, T*, std::uint64_t, std::uint64_t, std::uint64_t, \
                                         std::uint64_t, cudaStream_t);
LAUNCHERS(float)
LAUNCHERS(double)
#undef LAUNCHERS

}  // namespace zel::cuda
