#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <functional>
#include <optional>

#include "host_runtime/Parallel.h"

/// The seams through which every call of the host device passes, whichever vendor library it belongs to.
namespace zel::host {

/// Which family of status codes a call returns.
enum class CallFamily { runtime, npp, cufft };

/// Counts one call by its vendor name. Gives the status to return at once when an armed fault fires on it or a sticky
/// error stands, and nothing when the call is to go on.
std::optional<int> enterCall(const char* name, CallFamily family = CallFamily::runtime);

/// Runs `work` in the stream's order with device memory open to it: now, or in deferred mode when a synchronisation
/// needs it. A null stream is the default stream.
void enqueue(cudaStream_t stream, std::function<void()> work);

/// Whether all of [address, address + bytes) lies in one live device allocation.
bool isDeviceRange(const void* address, std::size_t bytes);

}  // namespace zel::host
