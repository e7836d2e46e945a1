#include "Kernels/ResetImage.h"

#include "PaddedVolume.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::test;

namespace {

/// A volume of 7s whose first `depth` slices are reset, padding and all.
std::vector<float> reset(const PaddedVolume<float>& volume, std::size_t height, std::size_t depth) {
    const auto device = toDevice(volume.elements);
    cuda::resetImage(device.get(), volume.pitch(), volume.slicePitch(), 2.5F, volume.size[0], height, depth, nullptr);
    return toHost(device, volume.elements.size());
}

}  // namespace

TEST(ResetImageTest, SetsEveryPixelAndNoPadding) {
    for (const std::size_t width : {0, 1, 63, 64, 65}) {
        const PaddedVolume<float> volume({width, 3, 2}, 5, 7);
        EXPECT_EQ(reset(volume, 3, 2), volume.with(std::vector(width * 3 * 2, 2.5F))) << "width " << width;
    }
}

TEST(ResetImageTest, LaunchesNothingForADepthOfZeroAndReportsARefusedLaunch) {
    const PaddedVolume<float> volume({10, 3, 1}, 5, 7);
    EXPECT_EQ(reset(volume, 3, 0), volume.elements);
    EXPECT_THROW(reset(volume, 0, 1), RuntimeError) << "a grid of no blocks";
}
