#pragma once

#include "Calls/VendorCall.h"
#include "Device/Devices.h"
#include "Device/Modes.h"
#include "Device/PendingError.h"

namespace zel::host {

/// A call of the runtime: its status is reported.
template <class Body>
cudaError_t runtimeCall(const char* name, Body body, HeldWorkUse heldWork = HeldWorkUse::run) {
    return vendorCall<CallFamily::runtime>(
        name, [&] { return report(body()); }, heldWork);
}

/// A runtime call that needs a current device.
template <class Body>
cudaError_t deviceCall(const char* name, Body body, HeldWorkUse heldWork = HeldWorkUse::run) {
    const auto onDevice = [&] {
        const cudaError_t status = checkCurrentDevice();
        return status == cudaSuccess ? body() : status;
    };
    return runtimeCall(name, onDevice, heldWork);
}

/// A call that waits for the device.
template <class Body>
cudaError_t synchronisingCall(const char* name, Body body) {
    return deviceCall(name, body, HeldWorkUse::synchronise);
}

template <class Body>
cudaError_t releasingCall(const char* name, Body body) {
    return releasingVendorCall<CallFamily::runtime>(name, body);
}

/// The status of giving back what a reset has ended. Its holder is on its way out after an error, and must not leave a
/// second one; under strict releases it is the holder who has to see to that, as on a GPU.
inline cudaError_t releasedTooLate(cudaError_t status) {
    return modes.strictReleases ? report(status) : status;
}

}  // namespace zel::host
