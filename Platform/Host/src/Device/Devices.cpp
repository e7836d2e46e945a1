#include "Device/Devices.h"

#include <algorithm>
#include <atomic>

#include "Device/Settings.h"

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

bool isDevice(int device) {
    return device >= 0 && device < deviceCount();
}

cudaError_t selectDevice(int device) {
    if (!isDevice(device)) return cudaErrorInvalidDevice;
    threadsDevice = device;
    return cudaSuccess;
}

void setDevices(int count, std::uint64_t bytesEach) {
    devices().count = std::clamp(count, 0, maxDevices);
    devices().bytesEach = bytesEach;
}

}  // namespace zel::host
