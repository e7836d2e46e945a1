#pragma once

#include "Calls/CallBook.h"

namespace zel::host {

/// The shape of a vendor call, whichever library it belongs to: counted, stopped by faults, and left by no exception.
template <CallFamily family, class Body>
auto vendorCall(const char* name, const Body& body, HeldWorkUse heldWork = HeldWorkUse::run) -> decltype(body()) {
    return guarded<family>([&] {
        const auto fault = enterCall(name, family, heldWork);
        return fault ? static_cast<decltype(body())>(*fault) : body();
    });
}

/// A call that gives something back does so under a fault too: nobody could do it again later, and what a test then
/// finds alive is what the system under test forgot.
template <CallFamily family, class Body>
auto releasingVendorCall(const char* name, const Body& body) -> decltype(body()) {
    return guarded<family>([&] {
        const auto fault = enterCall(name, family);
        const auto status = body();
        return fault ? static_cast<decltype(body())>(*fault) : status;
    });
}

}  // namespace zel::host
