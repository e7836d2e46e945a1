#pragma once

namespace zel {

/// What this build runs on, for its users, and what to do where it finds no device.
inline constexpr const char* buildName = "host build (runs on the CPU)";
inline constexpr const char* withoutDevice = "set ZEL_HOST_DEVICES to 1 or more";

}  // namespace zel
