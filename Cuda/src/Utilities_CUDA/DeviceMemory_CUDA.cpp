#include "DeviceMemory_CUDA.h"

#include <cuda_runtime.h>

#include <cstdint>

#include "StatusChecks_CUDA.h"

namespace zel::cuda {

namespace {

std::shared_ptr<void> ownDeviceMemory(void* address) {
    return std::shared_ptr<void>(address, [](void* memory) { ignoreCudaStatus(cudaFree(memory)); });
}

struct CoreCount {
    int computeCapability;  // major * 16 + minor
    unsigned cores;
};

constexpr CoreCount coreCounts[] = {
    {0x30, 192}, {0x32, 192}, {0x35, 192}, {0x37, 192}, {0x50, 128}, {0x52, 128}, {0x53, 128}, {0x60, 64},  {0x61, 128},
    {0x62, 128}, {0x70, 64},  {0x72, 64},  {0x75, 64},  {0x80, 64},  {0x86, 128}, {0x87, 128}, {0x89, 128}, {0x90, 128},
};
constexpr unsigned coresOfUnknownDevices = 128;

}  // namespace

std::size_t saturatingProduct(std::size_t a, std::size_t b) {
    std::size_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? SIZE_MAX : product;
}

std::shared_ptr<void> allocateDeviceMemory(std::size_t bytes) {
    void* address = nullptr;
    checkCudaStatus(cudaMalloc(&address, bytes));
    return ownDeviceMemory(address);
}

std::shared_ptr<void> allocateDevicePitched(std::size_t& pitch, std::size_t widthBytes, std::size_t height,
                                            std::size_t depth) {
    if (depth < 2) {
        void* address = nullptr;
        checkCudaStatus(cudaMallocPitch(&address, &pitch, widthBytes, height));
        return ownDeviceMemory(address);
    }
    cudaPitchedPtr memory{};
    checkCudaStatus(cudaMalloc3D(&memory, make_cudaExtent(widthBytes, height, depth)));
    pitch = memory.pitch;
    return ownDeviceMemory(memory.ptr);
}

void getDeviceCoreInfo(int device, unsigned& multiProcessors, unsigned& coresPerMultiProcessor) {
    cudaDeviceProp properties{};
    checkCudaStatus(cudaGetDeviceProperties(&properties, device));
    multiProcessors = static_cast<unsigned>(properties.multiProcessorCount);
    coresPerMultiProcessor = coresOfUnknownDevices;
    for (const CoreCount& entry : coreCounts) {
        if (entry.computeCapability == properties.major * 16 + properties.minor) coresPerMultiProcessor = entry.cores;
    }
}

}  // namespace zel::cuda
