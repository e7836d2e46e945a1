#include "Kernels/ResetImage.h"

#include <gtest/gtest.h>

#include <vector>

#include "DeviceVectors.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;

namespace {

/// Resets part of a buffer full of 7s and gives the whole buffer, padding and all.
std::vector<float> resetPart(std::size_t width, std::size_t height, std::size_t depth) {
    constexpr std::size_t rowLength = 70, rows = 4, slices = 3;
    const auto device = test::toDevice(std::vector<float>(rowLength * rows * slices, 7));
    resetImage(static_cast<float*>(device.get()), rowLength * sizeof(float), rowLength * rows * sizeof(float), 2.5F,
               width, height, depth, nullptr);
    return test::toHost<float>(device, rowLength * rows * slices);
}

}  // namespace

TEST(ResetImageTest, SetsEveryPixelAndNoPadding) {
    for (const std::size_t width : {0, 1, 63, 64, 65}) {
        const std::vector<float> result = resetPart(width, 3, 2);
        for (std::size_t i = 0; i < result.size(); ++i) {
            const bool inside = i % 70 < width && i / 70 % 4 < 3 && i / 280 < 2;
            ASSERT_EQ(result[i], inside ? 2.5F : 7.0F) << "width " << width << ", element " << i;
        }
    }
}

TEST(ResetImageTest, LaunchesNothingForADepthOfZeroAndReportsARefusedLaunch) {
    EXPECT_EQ(resetPart(10, 3, 0), std::vector<float>(70 * 4 * 3, 7));
    EXPECT_THROW(resetPart(10, 0, 1), RuntimeError) << "a grid of no blocks";
}
