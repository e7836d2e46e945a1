#include "Blocks/Launch.h"

#include "Calls/RuntimeCall.h"
#include "Device/Streams.h"

constinit thread_local uint3 blockIdx{};
constinit thread_local dim3 blockDim;
constinit thread_local dim3 gridDim;
constinit thread_local void* zel::host::blockSharedMemory = nullptr;
constinit thread_local zel::host::BlockPart zel::host::blockPart{0, 1, false};

namespace zel::host {
namespace {

bool isLegalGrid(dim3 grid) {
    constexpr unsigned int maxX = 0x7fffffff;
    return grid.x - 1 < maxX && grid.y - 1 < maxGridYZ && grid.z - 1 < maxGridYZ;
}

bool isLegalBlock(dim3 block) {
    const bool sides = block.x - 1 < maxThreadsPerBlock && block.y - 1 < maxThreadsPerBlock && block.z - 1 < maxBlockZ;
    return sides && std::uint64_t{block.x} * block.y * block.z <= maxThreadsPerBlock;
}

cudaError_t check(const cudaLaunchConfig_t* config, const KernelCall& kernel) {
    if (config == nullptr) return cudaErrorInvalidValue;
    if (kernel.call == nullptr) return cudaErrorInvalidDeviceFunction;
    if (!isLegalGrid(config->gridDim) || !isLegalBlock(config->blockDim)) return cudaErrorInvalidConfiguration;
    if (config->dynamicSmemBytes > maxSharedBytes) return cudaErrorInvalidValue;
    const bool ours = isStream(config->stream) && streamOf(config->stream).device == currentDevice();
    return ours ? cudaSuccess : cudaErrorInvalidResourceHandle;
}

}  // namespace

cudaError_t launchKernel(const cudaLaunchConfig_t* config, const KernelCall& kernel) {
    return deviceCall("cudaLaunchKernelEx", [&] {
        if (const cudaError_t status = check(config, kernel); status != cudaSuccess) return status;
        const Launch launch{config->gridDim, config->blockDim, config->dynamicSmemBytes, kernel};
        CUstream_st& stream = streamOf(config->stream);
        if (modes.deferredStreams) {
            defer(stream, [later = Launch{launch}, arguments = kernel.copy(kernel.call)]() mutable {
                later.kernel.call = arguments.get();
                runBlocks(later);
            });
        } else {
            runNow(stream, [&] { runBlocks(launch); });
        }
        return cudaSuccess;
    });
}

}  // namespace zel::host
