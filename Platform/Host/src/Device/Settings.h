#pragma once

#include <cstdint>

namespace zel::host {

/// Bytes of memory that this process may use: the machine's, or those of a container with fewer.
std::uint64_t usableBytes();

/// What the environment asks for, or else the defaults. Read at each call.
int deviceCountSetting();            ///< ZEL_HOST_DEVICES, 0 to maxDevices, 1 by default
std::uint64_t deviceBytesSetting();  ///< ZEL_HOST_DEVICE_MIB, three quarters of usableBytes() by default
int threadsSetting();  ///< ZEL_HOST_THREADS, by default all of the machine's or as many as a container may use
std::uint64_t threadSeedSetting();  ///< ZEL_HOST_THREAD_SEED, 1 by default: draws the order of a block's threads

inline constexpr int maxDevices = 64;

}  // namespace zel::host
