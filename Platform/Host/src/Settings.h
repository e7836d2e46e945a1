#pragma once

#include <cstdint>

namespace zel::host {

/// Bytes of the machine's memory.
std::uint64_t machineBytes();

/// What the environment asks for, or else the defaults. Read at each call.
int deviceCountSetting();            ///< ZEL_HOST_DEVICES, 0 to maxDevices, 1 by default
std::uint64_t deviceBytesSetting();  ///< ZEL_HOST_DEVICE_MIB, three quarters of the machine's by default
int threadsSetting();                ///< ZEL_HOST_THREADS, all of the machine's by default

inline constexpr int maxDevices = 64;

}  // namespace zel::host
