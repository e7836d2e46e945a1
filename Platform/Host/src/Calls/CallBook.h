#pragma once

#include <host_device.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Device/ExceptionStatus.h"
#include "Device/HeldWork.h"

namespace zel::host {

/// Counts of calls and the armed fault.
struct CallBook {
    struct NameHash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    std::mutex mutex;
    std::unordered_map<std::string, std::uint64_t, NameHash, std::equal_to<>> counts;
    std::uint64_t total = 0;
    Fault fault;
    std::uint64_t callsToFault = 0;  ///< 0: none armed
    bool fired = false;
};

/// Never destroyed: calls may come from other libraries' destructors at exit.
CallBook& callBook();

/// Counts one call by its vendor name, and does with held work what the call means for it; one that does not go on runs
/// it. Gives the status to return at once when an armed fault fires on the call, a sticky error stands or held work
/// fails, and nothing when the call is to go on.
std::optional<int> enterCall(const char* name, CallFamily family = CallFamily::runtime,
                             HeldWorkUse heldWork = HeldWorkUse::run);

/// The status of a failed call of the runtime that still stands, or 0.
int stickyError();
void clearStickyError();

}  // namespace zel::host
