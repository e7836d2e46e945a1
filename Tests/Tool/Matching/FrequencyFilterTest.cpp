#include "Matching/FrequencyFilter.h"

#include "TestImages.h"

using namespace zel;
using namespace zel::test;

// A box of 8 x 10 x 5 voxels of 2 x 1 x 1: along x column k is the frequency (k - 4) / 16.
TEST(FrequencyFilterTest, LetsPassWhatItsBandsSay) {
    const auto filter = [](const tool::FrequencyBands& bands) {
        HostImage image = tool::makeFrequencyFilter({8, 10, 5}, {2, 1, 1}, bands);
        EXPECT_EQ(image.getDimension(0), 9U);
        return [voxels = readAll<float>(image)](int x, int y, int z) {
            return voxels[std::size_t(((z + 2) * 10 + y + 5) * 9 + x + 4)];
        };
    };
    const auto low = filter({.lowPass = 0.125});
    EXPECT_EQ(low(0, 0, 0), 1);
    EXPECT_FLOAT_EQ(low(2, 0, 0), 0.5F);
    EXPECT_FLOAT_EQ(low(-2, 0, 0), 0.5F);
    EXPECT_FLOAT_EQ(low(4, 0, 0), 0.0625F) << "twice the frequency, four times the exponent";
    EXPECT_FLOAT_EQ(low(0, 1, 0), std::exp2(-0.64F)) << "a tenth of a cycle";
    const auto high = filter({.highPass = 0.2});
    EXPECT_EQ(high(0, 0, 0), 0);
    EXPECT_FLOAT_EQ(high(0, 2, 0), 0.5F);
    EXPECT_FLOAT_EQ(high(0, 0, -1), 0.5F);
    const auto both = filter({.lowPass = 0.125, .highPass = 0.2});
    EXPECT_FLOAT_EQ(both(3, -2, 1), low(3, -2, 1) * high(3, -2, 1));
    // A tilt series to 60 degrees: what rises more steeply than the root of 3 is missing, whatever ky.
    const auto wedge = filter({.maxTilt = 60});
    for (const int y : {-5, 0, 3}) {
        EXPECT_EQ(wedge(0, y, 0), 1);
        EXPECT_EQ(wedge(4, y, 2), 1) << "0.4 beside 0.25, a slope of 1.6";
        EXPECT_EQ(wedge(3, y, 2), 0);
        EXPECT_EQ(wedge(-2, y, -1), 1) << "0.2 beside 0.125";
        EXPECT_EQ(wedge(1, y, -1), 0);
    }
    const auto corner = filter({.maxTilt = 45});
    EXPECT_EQ(corner(0, 4, 1), 0);
    EXPECT_EQ(corner(4, 4, 1), 1);
}
