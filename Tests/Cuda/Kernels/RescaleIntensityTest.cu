#include "Kernels/RescaleIntensity.h"

#include <cmath>

#include "Pixelwise.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

struct Ranges {
    double inMin, inMax, outMin, outMax;
};

template <typename T>
PixelwiseOperation<T, float> rescaling(const Ranges& ranges) {
    const double span = ranges.inMax == ranges.inMin ? 1 : ranges.inMax - ranges.inMin;
    const double factor = (ranges.outMax - ranges.outMin) / span, offset = ranges.outMin - factor * ranges.inMin;
    return {launching<1>(rescaleIntensity<T>, ranges.inMin, ranges.inMax, ranges.outMin, ranges.outMax),
            [=](const std::vector<T>& in) { return static_cast<float>(std::fma(factor, in[0], offset)); }};
}

}  // namespace

TEST(RescaleIntensityTest, MapsLinearlyAndLeavesNothingOutside) {
    // Pixels beyond the range; a range turned round; a range of one value.
    for (const Ranges& ranges : {Ranges{-1.3, 2.1, -1, 1}, {2, -1, 0, 255}, {0.7, 0.7, -1, 1}}) {
        expectPixelwise(rescaling<float>(ranges), {"ab", "aa"});
        expectPixelwise(rescaling<double>(ranges), {"ab"});
    }
    const auto constant = toDevice(std::vector<float>{0.7F});
    rescaleIntensity(constant.get(), 4, 4, constant.get(), 4, 4, 1, 1, 1, 0.7F, 0.7F, -1, 1, nullptr);
    EXPECT_EQ(toHost(constant, 1), std::vector<float>{-1});
}
