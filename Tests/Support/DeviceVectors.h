#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::test {

/// The values in device memory of their own.
template <typename T>
std::shared_ptr<T> toDevice(const std::vector<T>& values) {
    const std::size_t bytes = values.size() * sizeof(T);
    const auto device = std::static_pointer_cast<T>(cuda::allocateDeviceMemory(bytes));
    cuda::checkCudaStatus(cudaMemcpy(device.get(), values.data(), bytes, cudaMemcpyHostToDevice));
    return device;
}

/// What lies in device memory when all work is done.
template <typename T>
std::vector<T> toHost(const std::shared_ptr<T>& device, std::size_t count) {
    std::vector<T> values(count);
    cuda::checkCudaStatus(cudaDeviceSynchronize());
    cuda::checkCudaStatus(cudaMemcpy(values.data(), device.get(), count * sizeof(T), cudaMemcpyDeviceToHost));
    return values;
}

}  // namespace zel::test
