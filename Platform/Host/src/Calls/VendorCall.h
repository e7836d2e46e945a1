#pragma once

#include "Calls/CallBook.h"

namespace zel::host {

/// The shape of a vendor call, whichever library it belongs to: counted, stopped by faults, and left by no exception.
template <CallFamily family, class Body>
auto vendorCall(const char* name, const Body& body) -> decltype(body()) {
    return guarded<family>([&] {
        const auto fault = enterCall(name, family);
        return fault ? static_cast<decltype(body())>(*fault) : body();
    });
}

}  // namespace zel::host
