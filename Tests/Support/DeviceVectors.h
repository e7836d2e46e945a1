#pragma once

#include <memory>
#include <vector>

#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::test {

/// The values in device memory of their own.
template <typename T>
std::shared_ptr<void> toDevice(const std::vector<T>& values) {
    auto device = cuda::allocateDeviceMemory(values.size() * sizeof(T));
    cuda::checkCudaStatus(cudaMemcpy(device.get(), values.data(), values.size() * sizeof(T), cudaMemcpyHostToDevice));
    return device;
}

/// What lies in device memory when all work is done.
template <typename T>
std::vector<T> toHost(const std::shared_ptr<void>& device, std::size_t count) {
    std::vector<T> values(count);
    cuda::checkCudaStatus(cudaDeviceSynchronize());
    cuda::checkCudaStatus(cudaMemcpy(values.data(), device.get(), count * sizeof(T), cudaMemcpyDeviceToHost));
    return values;
}

}  // namespace zel::test
