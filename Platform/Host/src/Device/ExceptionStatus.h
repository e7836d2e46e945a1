#pragma once

namespace zel::host {

/// Which family of status codes a call returns.
enum class CallFamily { runtime, npp, cufft };

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

}  // namespace zel::host
