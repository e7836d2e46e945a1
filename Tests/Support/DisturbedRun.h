#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <span>
#include <vector>

#include "FilterRun.h"
#include "zel/Exceptions.h"

namespace zel::test {

/// A run (a FilterRun) that is disturbed in all ways, and that has to be right afterwards.
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

    /// Cancels at each poll. In one block nothing is polled after the download: the result is complete.
    void cancelAtEachStep(bool endsWithUnpolledDownload) {
        auto& filter = run_.filter;
        StepWatch watch;
        filter.run(&watch);
        for (std::uint64_t done = 0; done < watch.total(); ++done) {
            SCOPED_TRACE(testing::Message() << "after " << done << " of " << watch.total() << " steps");
            StepWatch canceller(&filter, done);
            if (endsWithUnpolledDownload && done + 1 == watch.total()) {
                EXPECT_NO_THROW(filter.run(&canceller));
            } else {
                EXPECT_THROW(filter.run(&canceller), ExceptionCancelation);
                EXPECT_EQ(canceller.steps(), done) << "a step that was cancelled does not count";
            }
        }
        expectUnharmed();
    }

    /// Refuses each of these calls once, as often as a run makes it.
    void refuseEachCall(std::span<const char* const> calls) {
        for (const char* call : calls) {
            host::resetCallCounts();
            run_.filter.run();
            const std::uint64_t count = host::callCount(call);
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

    const std::vector<T>& expected() const { return expected_; }

private:
    Run& run_;
    std::vector<T> expected_;
    host::DeviceUse before_;
};

}  // namespace zel::test
