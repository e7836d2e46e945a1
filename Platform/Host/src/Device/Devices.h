#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::host {

int deviceCount();
/// Capacity of each device.
std::uint64_t deviceBytes();
/// For a scope of a test; devices beyond maxDevices are left out.
void setDevices(int count, std::uint64_t bytesEach);

bool isDevice(int device);
/// The calling thread's.
int currentDevice();
cudaError_t selectDevice(int device);
/// cudaSuccess when the calling thread's current device exists.
cudaError_t checkCurrentDevice();

/// The vendor's limits of a device of compute capability 9.0.
inline constexpr unsigned int maxThreadsPerBlock = 1024;
inline constexpr unsigned int maxGridYZ = 65535;
inline constexpr unsigned int maxBlockZ = 64;
inline constexpr std::size_t maxSharedBytes = 49152;

}  // namespace zel::host
