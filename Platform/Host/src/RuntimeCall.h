#pragma once

#include "DeviceCall.h"
#include "Devices.h"

namespace zel::host {

/// Makes a status other than cudaSuccess the calling thread's pending error; gives it back.
cudaError_t report(cudaError_t status);

/// Takes the calling thread's pending error away.
cudaError_t takePendingError();
cudaError_t pendingError();

/// The shape of a runtime call: counted, stopped by faults, its status reported.
template <class Body>
cudaError_t runtimeCall(const char* name, Body body) {
    if (const auto fault = enterCall(name)) return static_cast<cudaError_t>(*fault);
    return report(body());
}

/// A runtime call that needs a current device.
template <class Body>
cudaError_t deviceCall(const char* name, Body body) {
    return runtimeCall(name, [&] {
        const cudaError_t status = checkCurrentDevice();
        return status == cudaSuccess ? body() : status;
    });
}

/// A call that gives something back does so under a fault too: nobody could do it again later, and what a test then
/// finds alive is what the system under test forgot.
template <class Body>
cudaError_t releasingCall(const char* name, Body body) {
    const auto fault = enterCall(name);
    const cudaError_t status = body();
    return fault ? static_cast<cudaError_t>(*fault) : status;
}

}  // namespace zel::host
