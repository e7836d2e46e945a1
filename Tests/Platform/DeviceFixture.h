#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

namespace zel::host {

/// Each test leaves the device as it found it: nothing alive, no fault, no pending error.
class DeviceTest : public ::testing::Test {
protected:
    void TearDown() override {
        clearFault();
        cudaGetLastError();
        const DeviceUse use = deviceUse();
        EXPECT_EQ(use.liveAllocations, 0u);
        EXPECT_EQ(use.liveBytes, 0u);
        EXPECT_EQ(use.liveStreams, 0u);
    }
};

/// Device memory of a scope.
template <class T>
class DeviceArray {
public:
    explicit DeviceArray(std::size_t count) { EXPECT_EQ(cudaMalloc(&data_, count * sizeof(T)), cudaSuccess); }
    ~DeviceArray() { cudaFree(data_); }
    DeviceArray(const DeviceArray&) = delete;
    DeviceArray& operator=(const DeviceArray&) = delete;

    T* get() const { return data_; }

private:
    T* data_ = nullptr;
};

}  // namespace zel::host
