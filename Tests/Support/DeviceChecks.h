#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <span>
#include <vector>

#include "RunChecks.h"

// Checks of a FilterRun that watch the host device from the inside.
namespace zel::test {

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
template <typename Run, typename T>
class DisturbedRun {
public:
    /// Runs it once, undisturbed.
    explicit DisturbedRun(Run& run) : run_(run) {
        run_.filter.run();
        expected_ = run_.template result<T>();
        before_ = host::deviceUse();
    }

    /// Nothing is left on the device, no error is pending, and the next run gives what it should.
    void expectUnharmed() {
        host::DeviceUse after = host::deviceUse();
        after.peakBytes = before_.peakBytes;
        EXPECT_EQ(after, before_) << "something was left on the device";
        EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
        run_.filter.run();
        EXPECT_EQ(run_.template result<T>(), expected_);
    }

    /// Refuses each of these calls once, as often as a run makes it.
    void refuseEachCall(std::span<const char* const> calls) {
        for (const char* call : calls) {
            const std::uint64_t count = countOf(call);
            for (std::uint64_t nth = 1; nth <= count; ++nth) {
                SCOPED_TRACE(testing::Message() << call << ", call " << nth);
                host::injectFault({.call = call, .nth = nth});
                EXPECT_THROW(run_.filter.run(), RuntimeError);
                EXPECT_TRUE(host::faultFired());
            }
        }
        host::clearFault();
        expectUnharmed();
    }

    /// Lets the device fail in each such call. Of a run whose images lie in host memory: they outlast a reset.
    void failDeviceAtEach(const char* call) {
        const std::uint64_t count = countOf(call);
        for (std::uint64_t nth = 1; nth <= count; ++nth) {
            SCOPED_TRACE(testing::Message() << call << ", call " << nth);
            host::injectFault({.call = call, .nth = nth, .kind = host::FaultKind::failed});
            EXPECT_THROW(run_.filter.run(), RuntimeError);
            EXPECT_THROW(run_.filter.run(), RuntimeError) << "the error is sticky";
            host::clearFault();
            ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
            expectUnharmed();
        }
    }

private:
    std::uint64_t countOf(const char* call) {
        host::resetCallCounts();
        run_.filter.run();
        return host::callCount(call);
    }

    Run& run_;
    std::vector<T> expected_;
    host::DeviceUse before_;
};

}  // namespace zel::test
