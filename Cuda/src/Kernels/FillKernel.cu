#include "FillKernel.h"

#include <cstdint>

#include "lanes.h"

namespace zel::cuda {

__global__ void helper::fillKernelV4Kernel(unsigned char* mask, int radius) {
    onFirstLane([=] {
        const std::int64_t r = radius;
        unsigned char* next = mask;
        for (std::int64_t y = -r; y <= r; ++y) {
            const std::int64_t reach = r - (y < 0 ? -y : y);
            for (std::int64_t x = -r; x <= r; ++x) *next++ = x >= -reach && x <= reach ? 1 : 0;
        }
    });
}

cudaError_t fillKernelV4(unsigned char* mask, int radius, cudaStream_t stream) {
    cudaLaunchConfig_t config{};
    config.gridDim = dim3(1, 1, 1);
    config.blockDim = dim3(1, 1, 1);
    config.stream = stream;
    return cudaLaunchKernelEx(&config, helper::fillKernelV4Kernel, mask, radius);
}

}  // namespace zel::cuda
