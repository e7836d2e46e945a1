#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host_runtime/export.h"

/// What a test, a benchmark or a curious program can see of the host device and ask of it. Product code never includes
/// this header: to the system, the host device is just a GPU.
namespace zel::host {

/// What is alive on all devices together. Bytes are those asked for, without padding or red zones.
struct DeviceUse {
    std::uint64_t liveAllocations = 0;
    std::uint64_t liveBytes = 0;
    std::uint64_t peakBytes = 0;  ///< highest liveBytes since resetPeakBytes()
    std::uint64_t liveStreams = 0;
    std::uint64_t livePlans = 0;

    bool operator==(const DeviceUse&) const = default;
};
ZEL_HOST_API DeviceUse deviceUse();
ZEL_HOST_API void resetPeakBytes();

/// Calls since resetCallCounts(), by the vendor's name of the function ("cudaMalloc",
/// "nppiFilterBoxBorder_8u_C1R_Ctx"). All launches count as "cudaLaunchKernelEx".
ZEL_HOST_API std::uint64_t callCount(std::string_view name);
/// Calls of all functions together.
ZEL_HOST_API std::uint64_t callCount();
ZEL_HOST_API void resetCallCounts();

/// A refused call returns its status, and the next cudaGetLastError() gives it once. A failed call is sticky: each
/// later call returns the status too, until cudaDeviceReset().
enum class FaultKind { refused, failed };

struct Fault {
    std::string call;       ///< the vendor's name; empty for any call
    std::uint64_t nth = 1;  ///< counted from injectFault() on, the next one being 1
    FaultKind kind = FaultKind::refused;
    /// The cudaError_t, NppStatus or cufftResult to return; 0 picks a fitting one by the call's family.
    int status = 0;
};

/// Arms one fault in place of any other. It fires once.
ZEL_HOST_API void injectFault(const Fault& fault);
/// Disarms the fault, and takes a sticky one back.
ZEL_HOST_API void clearFault();
/// Whether the last armed fault has fired.
ZEL_HOST_API bool faultFired();

/// Passes of erosion and dilation by an element of radius 1 are held back for the next pass to join them, over one
/// synchronisation each, and run before any other call (Device/HeldWork.h). By calls nobody can tell; who looks at
/// device memory by pointer, as no program may on a GPU, synchronises twice. In the modes deferredStreams,
/// protectedMemory and redZones each pass runs by itself.

/// Modes that bring out faults which a CPU hides. Switch them while no allocation is alive.
struct TestModes {
    bool deferredStreams = false;        ///< queued work runs only when a synchronisation or a blocking call needs it
    bool protectedMemory = false;        ///< the host cannot touch device memory outside launches and copies
    bool poison = false;                 ///< fresh and freed device memory is filled with 0xCD / 0xDD
    bool redZones = false;               ///< a written byte beside an allocation ends the process with a message
    std::uint64_t blockShuffleSeed = 0;  ///< not 0: blocks run in an order drawn from it
    bool strictReleases = false;         ///< giving back what a reset has ended leaves a pending error, as on a GPU
    bool separateMemory = false;         ///< the device cannot use the host's memory in place, as most GPUs cannot

    bool operator==(const TestModes&) const = default;
};
ZEL_HOST_API TestModes testModes();

/// Sets the modes for a scope.
class ZEL_HOST_API ScopedTestModes {
public:
    explicit ScopedTestModes(const TestModes& modes);
    ~ScopedTestModes();
    ScopedTestModes(const ScopedTestModes&) = delete;
    ScopedTestModes& operator=(const ScopedTestModes&) = delete;

private:
    TestModes previous_;
};

/// Another number of devices (0 is legal) of another capacity for a scope. ZEL_HOST_DEVICES and ZEL_HOST_DEVICE_MIB
/// give the values outside it.
class ZEL_HOST_API ScopedDevices {
public:
    ScopedDevices(int count, std::uint64_t bytesEach);
    ~ScopedDevices();
    ScopedDevices(const ScopedDevices&) = delete;
    ScopedDevices& operator=(const ScopedDevices&) = delete;

private:
    int previousCount_;
    std::uint64_t previousBytes_;
};

}  // namespace zel::host
