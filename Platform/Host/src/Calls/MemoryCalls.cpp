#include <optional>

#include "Calls/RuntimeCall.h"
#include "Device/Allocations.h"
#include "Device/Streams.h"

using namespace zel::host;

namespace {

constexpr std::size_t pitchUnit = 256;

/// a * b * c, unless it overflows.
std::optional<std::size_t> product(std::size_t a, std::size_t b, std::size_t c) {
    std::size_t result = 0;
    if (__builtin_mul_overflow(a, b, &result) || __builtin_mul_overflow(result, c, &result)) return std::nullopt;
    return result;
}

/// Far beyond every machine, so that no later sum overflows.
constexpr std::size_t impossibleBytes = std::size_t{1} << 60;

cudaError_t allocate(void** address, std::size_t bytes, std::size_t extent) {
    if (address == nullptr) return cudaErrorInvalidValue;
    *address = nullptr;
    if (bytes == 0) return cudaSuccess;
    if (extent > impossibleBytes) return cudaErrorMemoryAllocation;
    *address = allocations().allocate({bytes, extent}, currentDevice());
    return *address == nullptr ? cudaErrorMemoryAllocation : cudaSuccess;
}

cudaError_t allocatePitched(void** address, std::size_t* pitch, cudaExtent extent) {
    if (pitch == nullptr) return cudaErrorInvalidValue;
    if (extent.width > impossibleBytes) return cudaErrorMemoryAllocation;
    const std::size_t padded = (extent.width + pitchUnit - 1) / pitchUnit * pitchUnit;
    const auto bytes = product(extent.width, extent.height, extent.depth);
    const auto paddedBytes = product(padded, extent.height, extent.depth);
    if (!bytes || !paddedBytes) return cudaErrorMemoryAllocation;
    const cudaError_t status = allocate(address, *bytes, *paddedBytes);
    if (status == cudaSuccess) *pitch = padded;
    return status;
}

cudaError_t freeMemory(void* address) {
    if (address == nullptr) return cudaSuccess;
    if (allocations().isRetired(address)) return releasedTooLate(cudaErrorInvalidValue);
    // As on a GPU, freeing waits for the work that may use the memory, and tells of its failure.
    const cudaError_t worked = runAllDeferredWork();
    const cudaError_t freed = report(allocations().free(address));
    return worked == cudaSuccess ? freed : worked;
}

}  // namespace

cudaError_t cudaMalloc(void** address, std::size_t bytes) {
    return deviceCall("cudaMalloc", [&] { return allocate(address, bytes, bytes); });
}

cudaError_t cudaMallocPitch(void** address, std::size_t* pitch, std::size_t widthBytes, std::size_t height) {
    return deviceCall("cudaMallocPitch", [&] { return allocatePitched(address, pitch, {widthBytes, height, 1}); });
}

cudaError_t cudaMalloc3D(cudaPitchedPtr* pitched, cudaExtent extent) {
    return deviceCall("cudaMalloc3D", [&] {
        if (pitched == nullptr) return cudaErrorInvalidValue;
        const cudaError_t status = allocatePitched(&pitched->ptr, &pitched->pitch, extent);
        if (status != cudaSuccess) return status;
        pitched->xsize = extent.width;
        pitched->ysize = extent.height;
        return cudaSuccess;
    });
}

cudaError_t cudaFree(void* address) {
    return releasingCall("cudaFree", [&] { return freeMemory(address); });
}

cudaError_t cudaMemGetInfo(std::size_t* freeBytes, std::size_t* totalBytes) {
    return deviceCall("cudaMemGetInfo", [&] {
        if (freeBytes == nullptr || totalBytes == nullptr) return cudaErrorInvalidValue;
        const std::uint64_t used = allocations().usedBytes(currentDevice());
        *totalBytes = deviceBytes();
        *freeBytes = used < deviceBytes() ? deviceBytes() - used : 0;
        return cudaSuccess;
    });
}
