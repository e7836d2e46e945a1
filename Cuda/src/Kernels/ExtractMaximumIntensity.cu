#include "ExtractMaximumIntensity.h"

#include "BlockRow.h"
#include "RowLaunch.h"
#include "lanes.h"

namespace zel::cuda {

template <typename T, typename M, typename L>
__global__ void extractMaximumIntensity2dKernel(const T* image, unsigned long long pitch, L index, M* maximum,
                                                unsigned long long maximumPitch, L* indices,
                                                unsigned long long indicesPitch, unsigned long long width) {
    const T* const row = blockRow(image, pitch);
    M* const maximumRow = blockRow(maximum, maximumPitch);
    L* const indexRow = blockRow(indices, indicesPitch);
    forEachColumn(width, [=](std::uint64_t x) {
        if (row[x] > maximumRow[x]) {
            maximumRow[x] = static_cast<M>(row[x]);
            indexRow[x] = index;
        }
    });
}

template <typename T, typename L>
void extractMaximumIntensity(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, L index, float* maximum,
                             std::uint64_t maximumPitch, std::uint64_t maximumSlicePitch, L* indices,
                             std::uint64_t indicesPitch, std::uint64_t indicesSlicePitch, std::uint64_t width,
                             std::uint64_t height, std::uint64_t depth, cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        cudaLaunchKernelEx(&config, extractMaximumIntensity2dKernel<T, float, L>, offsetBytes(image, z * slicePitch),
                           pitch, index, offsetBytes(maximum, z * maximumSlicePitch), maximumPitch,
                           offsetBytes(indices, z * indicesSlicePitch), indicesPitch, width);
    });
}

#define LAUNCHER(T, L)                                                                                      \
    template void extractMaximumIntensity(const T*, std::uint64_t, std::uint64_t, L, float*, std::uint64_t, \
                                          std::uint64_t, L*, std::uint64_t, std::uint64_t, std::uint64_t,   \
                                          std::uint64_t, std::uint64_t, cudaStream_t);
#define LAUNCHERS(L)   \
    LAUNCHER(float, L) \
    LAUNCHER(double, L)
LAUNCHERS(std::uint8_t)
LAUNCHERS(std::uint16_t)
LAUNCHERS(std::uint32_t)
#undef LAUNCHERS
#undef LAUNCHER

}  // namespace zel::cuda
