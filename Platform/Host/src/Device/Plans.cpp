#include "Device/Plans.h"

#include <array>
#include <mutex>

#include "Device/Devices.h"
#include "Device/Settings.h"

namespace zel::host {
namespace {

struct DevicePlans {
    std::uint64_t live = 0;
    std::uint64_t generation = 0;  ///< counts resets
};

constinit std::mutex mutex;
constinit std::array<DevicePlans, maxDevices> plans{};

std::uint64_t countPlan(int device) {
    const std::lock_guard lock(mutex);
    ++plans[device].live;
    return plans[device].generation;
}

}  // namespace

PlanToken::PlanToken() : device_(currentDevice()), generation_(countPlan(device_)) {}

PlanToken::~PlanToken() {
    const std::lock_guard lock(mutex);
    if (plans[device_].generation == generation_) --plans[device_].live;
}

bool PlanToken::isAlive() const {
    const std::lock_guard lock(mutex);
    return plans[device_].generation == generation_;
}

std::uint64_t livePlans() {
    const std::lock_guard lock(mutex);
    std::uint64_t live = 0;
    for (const DevicePlans& device : plans) live += device.live;
    return live;
}

void discardPlans(int device) {
    const std::lock_guard lock(mutex);
    plans[device].live = 0;
    ++plans[device].generation;
}

}  // namespace zel::host
