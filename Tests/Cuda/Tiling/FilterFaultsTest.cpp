// What the host device tells of every filter: its calls, its memory, what it makes of faults.

#include "DeviceChecks.h"
#include "Messages.h"
#include "SmallFilterRuns.h"
#include "zel/AlgoInfo.h"

using namespace zel;
using namespace zel::test;

namespace {

template <typename Filter>
class FilterFaultsTest : public SmallFilterRunTest<Filter> {};
TYPED_TEST_SUITE(FilterFaultsTest, SmallFilterRuns);

}  // namespace

TYPED_TEST(FilterFaultsTest, SynchronisesAtEachStepAndMakesOneStreamAtMost) {
    this->onAllPlacements([](TypeParam& run, const auto&) {
        host::resetCallCounts();
        StepWatch watch;
        run.filter.run(&watch);
        // Of a matching's steps some are the host's alone.
        constexpr bool isMatching = std::is_same_v<TypeParam, SmallTemplateMatching>;
        EXPECT_GE(host::callCount("cudaDeviceSynchronize"), isMatching ? watch.total / 3 : watch.total);
        EXPECT_EQ(host::callCount("cudaStreamCreate"), 1U);
        CallersStream callers;
        run.filter.cudaContext = &callers.context;
        host::resetCallCounts();
        run.filter.run();
        EXPECT_EQ(host::callCount("cudaStreamCreate"), 0U) << "the caller's is used";
    });
}

TYPED_TEST(FilterFaultsTest, LeavesNothingBehindWhenCancelled) {
    this->onAllPlacements([](TypeParam& run, const auto&) {
        DisturbedRun disturbed(run);
        StepWatch watch;
        run.filter.run(&watch);
        for (std::uint64_t done = 0; done < watch.total; ++done) {
            StepWatch canceller(&run.filter, done);
            try {
                run.filter.run(&canceller);
            } catch (const ExceptionCancelation&) {  // where a poll follows
            }
        }
        disturbed.expectUnharmed();
    });
}

TYPED_TEST(FilterFaultsTest, ReportsEachRefusedCallAndLeavesNothing) {
    std::vector<const char*> calls{"cudaGetDeviceCount",
                                   "cudaGetDevice",
                                   "cudaGetDeviceProperties",
                                   "cudaDeviceGetAttribute",
                                   "cudaStreamCreate",
                                   "cudaStreamGetFlags",
                                   "cudaStreamSynchronize",
                                   "cudaMalloc",
                                   "cudaMallocPitch",
                                   "cudaMalloc3D",
                                   "cudaMemcpyAsync",
                                   "cudaMemcpy2DAsync",
                                   "cudaMemcpy3DAsync",
                                   "cudaDeviceSynchronize",
                                   "cufftCreate",
                                   "cufftSetAutoAllocation",
                                   "cufftSetStream",
                                   "cufftGetSize2d",
                                   "cufftGetSize3d",
                                   "cufftSetWorkArea",
                                   "cufftMakePlan2d",
                                   "cufftMakePlan3d",
                                   "cufftExecR2C",
                                   "cufftExecC2R"};
    // A matching's plans go with their owner, which cannot raise an error.
    if constexpr (!std::is_same_v<TypeParam, SmallTemplateMatching>) calls.push_back("cufftDestroy");
    if constexpr (TypeParam::passes == 1) {  // a Gaussian's launches go unchecked
        calls.insert(calls.end(), {"cudaLaunchKernelEx", TypeParam::work, "nppiDilate3x3Border_8u_C1R_Ctx",
                                   "nppiDilateBorder_16u_C1R_Ctx", "nppiErodeBorder_32f_C1R_Ctx"});
    }
    this->onAllPlacements([&](TypeParam& run, const auto&) {
        DisturbedRun disturbed(run);
        for (const char* call : calls) disturbed.disturbEach(call, host::FaultKind::refused, [] {});
        disturbed.expectUnharmed();
    });
}

// Images in host memory: they outlast the reset.
TYPED_TEST(FilterFaultsTest, ReportsAFailedDeviceUntilItIsReset) {
    TypeParam run(this->image_, {});
    DisturbedRun disturbed(run);
    disturbed.disturbEach(TypeParam::work, host::FaultKind::failed, [&] {
        EXPECT_THROW(run.filter.run(), RuntimeError) << "the error is sticky";
        host::clearFault();
        ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
        disturbed.expectUnharmed();
    });
}

TYPED_TEST(FilterFaultsTest, ReportsAFullOrMissingDevice) {
    TypeParam run(this->image_, {});
    const auto message = [&] { return messageOf([&] { run.filter.run(); }); };
    const std::uint64_t peak = peakBytesOf(run), liveBefore = host::deviceUse().liveBytes;
    {
        const host::ScopedDevices small(1, peak - 1);
        EXPECT_THAT(message(), testing::HasSubstr("out of memory"));
        EXPECT_EQ(host::deviceUse().liveBytes, liveBefore);
        TypeParam tiled(this->image_, {false, false, TypeParam::tile});
        EXPECT_NO_THROW(tiled.filter.run()) << "tiles fit";
    }
    const host::ScopedDevices none(0, 0);
    EXPECT_EQ(message(), "No runner is available for " + run.filter.classInfo()->className());
}

TYPED_TEST(FilterFaultsTest, PassesUnderEveryTestMode) {
    const auto resultIn = [this](const auto& tile) {
        return resultOf<typename TypeParam::Pixel>(TypeParam(this->image_, {false, false, tile}));
    };
    const std::array expected{resultIn(this->tiles_[0]), resultIn(this->tiles_[1])};
    for (const host::TestModes& mode : everyTestMode) {
        const host::ScopedTestModes scoped(mode);
        for (const std::size_t i : {0, 1}) {
            expectEverywhere(expected[i], std::vector{this->tiles_[i]},
                             [&](const auto& placement) { return TypeParam(this->image_, placement); });
        }
    }
}
