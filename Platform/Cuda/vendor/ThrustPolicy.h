#pragma once

#include <thrust/execution_policy.h>

namespace zel::cuda {

/// Thrust on the current GPU.
inline constexpr auto& thrustPolicy = thrust::device;

}  // namespace zel::cuda
