#pragma once

#include <functional>

#include "Types.h"
#include "export.h"

namespace zel::host {

enum class ThrustWork { launch, copy };

/// The guard around all that Thrust does on the device: counted by `name` and open to faults, `work` runs in the order
/// of the default stream with device memory open to it, and is waited for. As with the vendor's Thrust no error stays
/// pending: one from before is the status of a launch, and lost in a copy.
ZEL_HOST_API cudaError_t callThrust(const char* name, ThrustWork kind, const std::function<void()>& work);

}  // namespace zel::host
