#include <cstring>

#include "Calls/RuntimeCall.h"
#include "Device/Allocations.h"
#include "Device/BlockStore.h"
#include "Device/Modes.h"
#include "Device/Plans.h"
#include "Device/Streams.h"

namespace zel::host {
namespace {

void resetDevice(int device) {
    discardStreams(device);
    discardPlans(device);
    allocations().retire(device);
    dropKeptBlocks();
    clearStickyError();  // of a fault that fired on the reset itself
    takePendingError();
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
            case cudaDevAttrPageableMemoryAccess:
                *value = modes.separateMemory ? 0 : 1;
                return cudaSuccess;
        }
        return cudaErrorInvalidValue;
    });
}

cudaError_t cudaDeviceSynchronize() {
    return synchronisingCall("cudaDeviceSynchronize", [] {
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
