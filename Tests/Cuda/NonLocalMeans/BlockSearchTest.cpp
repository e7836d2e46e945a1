#include <host_device.h>

#include "Messages.h"
#include "NonLocalMeans/BlockSearch_CUDA.h"

namespace zel::test {
namespace {

using amnlm::Extents3;

constexpr float rangeSigma = 0.2f, spatialSigma = 8;

TEST(BlockSearchTest, LongestSideIsShortenedZBeforeYBeforeX) {
    // Planes of more than 1 MiB each, so that budgets tell neighbouring blocks apart.
    const std::pair<Extents3, Extents3> cases[] = {
        {{128, 128, 128}, {128, 128, 128}}, {{128, 128, 128}, {128, 128, 127}},     {{128, 128, 128}, {128, 127, 127}},
        {{128, 128, 128}, {127, 127, 127}}, {{128, 128, 128}, {127, 127, 126}},     {{140, 130, 128}, {135, 130, 128}},
        {{128, 140, 140}, {128, 140, 139}}, {{20000, 20000, 1}, {20000, 19999, 1}},
    };
    for (const auto& [image, block] : cases) {
        SCOPED_TRACE(testing::PrintToString(image) + " to " + testing::PrintToString(block));
        const std::uint64_t budget = amnlm::estimatePeakDeviceMemory(block, rangeSigma, spatialSigma) >> 20;
        EXPECT_EQ(amnlm::findBlockExtents(image, budget, 125, rangeSigma, spatialSigma), block);
    }
    EXPECT_EQ(amnlm::findBlockExtents({9, 9, 9}, 0, 125, rangeSigma, spatialSigma), (Extents3{9, 9, 9}))
        << "below 1 MiB";
}

TEST(BlockSearchTest, CoresAreWhatTheOverlapLeaves) {
    EXPECT_EQ(amnlm::coreSteps({50, 60, 7}, {100, 60, 8}, 6), (Extents3{44, 60, 1}));
    EXPECT_EQ(amnlm::coreSteps({50, 60, 7}, {50, 60, 7}, 2147483647), (Extents3{50, 60, 7}));
    EXPECT_EQ(messageOf<UnexpectedError>([] {
                  amnlm::coreSteps({50, 60, 7}, {50, 60, 8}, 7);
              }),
              "Error, negative iteration block size.");
}

TEST(BlockSearchTest, BudgetFollowsTheSizeOfTheDevice) {
    constexpr std::uint64_t mib = 1048576;
    const auto budget = [](std::uint64_t deviceMib, const CudaContext* context) {
        const host::ScopedDevices devices(2, deviceMib * mib);
        return amnlm::memoryBudget(context);
    };
    EXPECT_EQ(budget(1000, nullptr), 1000U);
    EXPECT_EQ(budget(2000, nullptr), 1500U);
    EXPECT_EQ(budget(2001, nullptr), 1800U);
    for (const int device : {-1, 1, 2}) {
        const CudaContext context{device, nullptr};
        EXPECT_EQ(budget(4005, &context), 3604U) << "device " << device;
    }
}

}  // namespace
}  // namespace zel::test
