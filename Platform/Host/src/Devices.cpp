#include "Devices.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "Allocations.h"
#include "Faults.h"
#include "HostDevice.h"
#include "Plans.h"
#include "RuntimeCall.h"
#include "Settings.h"
#include "Streams.h"

namespace zel::host {
namespace {

struct DeviceSet {
    std::atomic<int> count = deviceCountSetting();
    std::atomic<std::uint64_t> bytesEach = deviceBytesSetting();
};

DeviceSet& devices() {
    static DeviceSet& set = *new DeviceSet;
    return set;
}

constinit thread_local int threadsDevice = 0;

bool isDevice(int device) {
    return device >= 0 && device < deviceCount();
}

void resetDevice(int device) {
    discardStreams(device);
    discardPlans(device);
    allocations().retire(device);
    dropKeptBlocks();
    clearStickyError();  // of a fault that fired on the reset itself
    takePendingError();
}

cudaError_t selectDevice(int device) {
    if (!isDevice(device)) return cudaErrorInvalidDevice;
    threadsDevice = device;
    return cudaSuccess;
}

cudaDeviceProp deviceProperties() {
    cudaDeviceProp properties{};
    std::strncpy(properties.name, "Host device (CPU)", sizeof properties.name - 1);
    properties.totalGlobalMem = deviceBytes();
    properties.sharedMemPerBlock = maxSharedBytes;
    properties.maxThreadsPerBlock = maxThreadsPerBlock;
    properties.maxThreadsPerMultiProcessor = 2048;
    properties.multiProcessorCount = 132;
    properties.major = 9;
    properties.minor = 0;
    return properties;
}

}  // namespace

int deviceCount() {
    return devices().count;
}
std::uint64_t deviceBytes() {
    return devices().bytesEach;
}
int currentDevice() {
    return threadsDevice;
}

cudaError_t checkCurrentDevice() {
    const int count = deviceCount();
    if (count == 0) return cudaErrorNoDevice;
    return currentDevice() < count ? cudaSuccess : cudaErrorInvalidDevice;
}

ScopedDevices::ScopedDevices(int count, std::uint64_t bytesEach)
    : previousCount_(deviceCount()), previousBytes_(deviceBytes()) {
    devices().count = std::clamp(count, 0, maxDevices);
    devices().bytesEach = bytesEach;
}

ScopedDevices::~ScopedDevices() {
    devices().count = previousCount_;
    devices().bytesEach = previousBytes_;
}

}  // namespace zel::host

using namespace zel::host;

cudaError_t cudaGetDeviceCount(int* count) {
    return runtimeCall("cudaGetDeviceCount", [&] {
        if (count == nullptr) return cudaErrorInvalidValue;
        *count = deviceCount();
        return cudaSuccess;
    });
}

cudaError_t cudaGetDevice(int* device) {
    return deviceCall("cudaGetDevice", [&] {
        if (device == nullptr) return cudaErrorInvalidValue;
        *device = currentDevice();
        return cudaSuccess;
    });
}

// Under a sticky error the choice is still made, though its status tells of the error: it concerns the thread, and a
// later reset has to find the device that the caller meant.
cudaError_t cudaSetDevice(int device) {
    if (stickyError() != cudaSuccess) selectDevice(device);
    return runtimeCall("cudaSetDevice", [&] {
        if (deviceCount() == 0) return cudaErrorNoDevice;
        return selectDevice(device);
    });
}

cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device) {
    return runtimeCall("cudaGetDeviceProperties", [&] {
        if (properties == nullptr) return cudaErrorInvalidValue;
        if (!isDevice(device)) return cudaErrorInvalidDevice;
        *properties = deviceProperties();
        return cudaSuccess;
    });
}

cudaError_t cudaDeviceGetAttribute(int* value, cudaDeviceAttr attribute, int device) {
    return runtimeCall("cudaDeviceGetAttribute", [&] {
        if (value == nullptr) return cudaErrorInvalidValue;
        if (!isDevice(device)) return cudaErrorInvalidDevice;
        switch (attribute) {
            case cudaDevAttrComputeCapabilityMajor:
                *value = deviceProperties().major;
                return cudaSuccess;
            case cudaDevAttrComputeCapabilityMinor:
                *value = deviceProperties().minor;
                return cudaSuccess;
        }
        return cudaErrorInvalidValue;
    });
}

cudaError_t cudaDeviceSynchronize() {
    return deviceCall("cudaDeviceSynchronize", [] {
        const cudaError_t status = synchronizeDevice(currentDevice());
        allocations().checkRedZones();
        return status;
    });
}

cudaError_t cudaDeviceReset() {
    clearStickyError();
    return releasingCall("cudaDeviceReset", [] {
        const cudaError_t status = checkCurrentDevice();
        if (status != cudaSuccess) return report(status);
        resetDevice(currentDevice());
        return cudaSuccess;
    });
}
