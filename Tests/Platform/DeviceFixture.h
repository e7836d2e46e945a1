#pragma once

#include <cuda_runtime.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <vector>

namespace zel::host {

using ::testing::Each;

/// Each test leaves the device as it found it: nothing alive, no fault, no pending error, the same modes. Looked at
/// when what a test's own fixture holds is gone.
class DeviceTest : public ::testing::Test {
protected:
    ~DeviceTest() override {
        clearFault();
        cudaGetLastError();
        const DeviceUse use = deviceUse();
        EXPECT_EQ(use.liveAllocations + use.liveBytes + use.liveStreams, 0u);
        EXPECT_TRUE(testModes() == modesBefore_);
    }

private:
    const TestModes modesBefore_ = testModes();
};

/// Its tests end copies of the process, which start anew: forking one with threads is not safe.
class DeviceDeathTest : public DeviceTest {
protected:
    DeviceDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

/// What calls return that are made one after the other.
using Statuses = std::vector<cudaError_t>;

inline cudaLaunchConfig_t shape(dim3 grid, dim3 block = dim3(64), cudaStream_t stream = nullptr) {
    cudaLaunchConfig_t config{};
    config.gridDim = grid;
    config.blockDim = block;
    config.stream = stream;
    return config;
}

/// Device memory of a scope; on request with each byte set, or with values.
template <class T>
class DeviceArray {
public:
    explicit DeviceArray(std::size_t count) : count_(count) {
        EXPECT_EQ(cudaMalloc(&data_, count * sizeof(T)), cudaSuccess);
    }
    explicit DeviceArray(const std::vector<T>& values) : DeviceArray(values.size()) {
        EXPECT_EQ(cudaMemcpy(data_, values.data(), count_ * sizeof(T), cudaMemcpyHostToDevice), cudaSuccess);
    }
    DeviceArray(std::size_t count, int byte) : DeviceArray(count) {
        EXPECT_EQ(cudaMemsetAsync(data_, byte, count * sizeof(T)), cudaSuccess);
        EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    }
    ~DeviceArray() { cudaFree(data_); }
    DeviceArray(const DeviceArray&) = delete;
    DeviceArray& operator=(const DeviceArray&) = delete;

    T* get() const { return data_; }
    std::vector<T> values() const {
        std::vector<T> values(count_);
        EXPECT_EQ(cudaMemcpy(values.data(), data_, count_ * sizeof(T), cudaMemcpyDeviceToHost), cudaSuccess);
        return values;
    }

private:
    std::size_t count_;
    T* data_ = nullptr;
};

}  // namespace zel::host
