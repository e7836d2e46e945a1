#pragma once

#include <cstdint>

namespace zel::host {

/// Counts an FFT plan of the current device as alive, until it is destroyed or its device is reset.
class PlanToken {
public:
    PlanToken();
    ~PlanToken();
    PlanToken(const PlanToken&) = delete;
    PlanToken& operator=(const PlanToken&) = delete;

    /// False once the device has been reset.
    bool isAlive() const;

private:
    const int device_;
    const std::uint64_t generation_;
};

std::uint64_t livePlans();
/// Ends a device's plans.
void discardPlans(int device);

}  // namespace zel::host
