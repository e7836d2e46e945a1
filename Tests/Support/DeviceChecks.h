#pragma once

#include <host_device.h>

#include "RunChecks.h"

// Checks of a FilterRun that watch the host device from the inside.
namespace zel::test {

/// Each of them brings out other faults.
inline const host::TestModes everyTestMode[]{{.deferredStreams = true},
                                             {.protectedMemory = true},
                                             {.poison = true, .redZones = true, .separateMemory = true},
                                             {.deferredStreams = true, .redZones = true, .blockShuffleSeed = 17}};

/// Bytes on the device that a run needs at most, and gives back.
template <typename Run>
std::uint64_t peakBytesOf(Run&& run) {
    const std::uint64_t before = host::deviceUse().liveBytes;
    host::resetPeakBytes();
    run.filter.run();
    EXPECT_EQ(host::deviceUse().liveBytes, before);
    return host::deviceUse().peakBytes - before;
}

/// A run that is disturbed in all ways, and that has to be right afterwards.
template <typename Run>
class DisturbedRun {
public:
    /// Runs it once, undisturbed.
    explicit DisturbedRun(Run& run) : run_(run), expected_(resultOf<Pixel>(run)), before_(host::deviceUse()) {}

    /// Nothing is left on the device, no error is pending, and the next run gives what it should.
    void expectUnharmed() {
        host::DeviceUse after = host::deviceUse();
        after.peakBytes = before_.peakBytes;
        EXPECT_EQ(after, before_) << "something was left on the device";
        EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
        EXPECT_EQ(resultOf<Pixel>(run_), expected_);
    }

    /// Lets the device refuse this call or fail in it, once for each time that a run makes it; each run is then to end
    /// in a RuntimeError. Looks behind each by `check`.
    template <typename Check>
    void disturbEach(const char* call, host::FaultKind kind, const Check& check) {
        host::resetCallCounts();
        run_.filter.run();
        const std::uint64_t count = host::callCount(call);
        for (std::uint64_t nth = 1; nth <= count; ++nth) {
            SCOPED_TRACE(testing::Message() << call << ", call " << nth);
            host::injectFault({.call = call, .nth = nth, .kind = kind});
            EXPECT_THROW(run_.filter.run(), RuntimeError);
            EXPECT_TRUE(host::faultFired());
            check();
            host::clearFault();
        }
    }

private:
    using Pixel = typename Run::Pixel;

    Run& run_;
    std::vector<Pixel> expected_;
    host::DeviceUse before_;
};

}  // namespace zel::test
