#pragma once

// Stands before Thrust's own header of this name, which knows no device but the ones that Thrust comes with: here
// device_ptr, device_vector and their iterators belong to the host device.

#include <thrust/detail/config.h>
#include <thrust/detail/execution_policy.h>

/// Thrust's entry points look for a policy's functions in its namespace, hence one of its own. They are in
/// ThrustPolicy.h; what is not there does not compile.
namespace zel::host::thrust_device {

struct Policy : thrust::execution_policy<Policy> {};

}  // namespace zel::host::thrust_device

THRUST_NAMESPACE_BEGIN
using device_system_tag = zel::host::thrust_device::Policy;
THRUST_NAMESPACE_END
