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

/// The status in the call's family that stands for the exception being handled; one of the runtime is made pending.
int exceptionStatus(CallFamily family);

/// The status that `body` returns, or else the one of the exception that it throws.
template <CallFamily family, class Body>
auto guarded(const Body& body) -> decltype(body()) {
    try {
        return body();
    } catch (...) {
        return static_cast<decltype(body())>(exceptionStatus(family));
    }
}

/// The shape of a vendor call: counted, stopped by faults, and left by no exception.
template <CallFamily family, class Body>
auto vendorCall(const char* name, const Body& body) -> decltype(body()) {
    return guarded<family>([&] {
        const auto fault = enterCall(name, family);
        return fault ? static_cast<decltype(body())>(*fault) : body();
    });
}

/// Runs `work` in the stream's order with device memory open to it: now, or in deferred mode when a synchronisation
/// needs it. A null stream is the default stream.
void enqueue(cudaStream_t stream, std::function<void()> work);

/// Whether all of [address, address + bytes) lies in one live device allocation.
bool isDeviceRange(const void* address, std::size_t bytes);

}  // namespace zel::host
