#include <bit>

#include "NppBoxSupport.h"

namespace zel::test {
namespace {

bool sameBits(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

TEST(NppBoxFloatTest, MeansAreCloseForEveryMask) {
    for (const NppiSize size : {NppiSize{1, 1}, NppiSize{5, 4}, NppiSize{37, 11}}) {
        for (const Window& window : windowsOfAllKinds()) {
            NppImage<float> src(size);
            src.randomise(3);
            const NppImage<float> dst = filtered(src, window);
            for (int y = 0; y < size.height; ++y) {
                for (int x = 0; x < size.width; ++x) {
                    const double mean = windowSum<double>(src, x, y, window) / static_cast<double>(area(window));
                    ASSERT_NEAR(dst.at(x, y), mean, 1e-4) << window.mask.width << " x " << window.mask.height;
                }
            }
            EXPECT_TRUE(dst.paddingIntact());
        }
    }
}

// Both ways to cut: a region of the whole image, and a tile with margins as an image of its own.
TEST(NppBoxFloatTest, PartsHaveTheBitsOfTheWhole) {
    NppImage<float> src({311, 257});
    src.randomise(11);
    for (const Window& window :
         {centred(3, 3), centred(4, 6), centred(15, 15), centred(51, 51), centred(63, 2), centred(17, 64)}) {
        SCOPED_TRACE(::testing::Message() << window.mask.width << " x " << window.mask.height);
        const NppImage<float> whole = filtered(src, window);
        for (const NppiPoint origin : {NppiPoint{0, 0}, NppiPoint{1, 3}, NppiPoint{77, 41}, NppiPoint{200, 250}}) {
            NppImage<float> part({std::min(101, 311 - origin.x), std::min(53, 257 - origin.y)});
            const auto expectPart = [&] {
                for (int y = 0; y < part.size().height; ++y) {
                    for (int x = 0; x < part.size().width; ++x) {
                        ASSERT_TRUE(sameBits(part.at(x, y), whole.at(origin.x + x, origin.y + y))) << x << ", " << y;
                    }
                }
            };
            filter(src, origin, part, window);
            expectPart();
            const NppiPoint low{std::max(0, origin.x - window.anchor.x), std::max(0, origin.y - window.anchor.y)};
            const NppiPoint high{std::min(311, origin.x + part.size().width + window.anchor.x),
                                 std::min(257, origin.y + part.size().height + window.anchor.y)};
            ASSERT_EQ(nppiFilterBoxBorder_32f_C1R_Ctx(
                          src.device(origin.x, origin.y), src.step(), {high.x - low.x, high.y - low.y},
                          {origin.x - low.x, origin.y - low.y}, part.device(), part.step(), part.size(), window.mask,
                          window.anchor, NPP_BORDER_REPLICATE, {}),
                      NPP_SUCCESS);
            part.download();
            expectPart();
        }
    }
}

TEST(NppBoxFloatTest, NotANumberStaysInItsWindows) {
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        NppImage<float> src({90, 70});
        src.randomise(2);
        const Window window{{21, 10}, {4, 7}};
        const NppImage<float> clean = filtered(src, window);
        src.at(40, 30) = value;
        src.upload();
        const NppImage<float> dst = filtered(src, window);
        for (int y = 0; y < 70; ++y) {
            for (int x = 0; x < 90; ++x) {
                const bool holds = x - 4 <= 40 && 40 < x - 4 + 21 && y - 7 <= 30 && 30 < y - 7 + 10;
                ASSERT_EQ(!std::isfinite(dst.at(x, y)), holds) << x << ", " << y;
                ASSERT_TRUE(holds || sameBits(dst.at(x, y), clean.at(x, y))) << x << ", " << y;
            }
        }
    }
}

TEST(NppBoxFloatTest, LargeImages) {
    for (const Window& window : {centred(15, 15), centred(51, 51), centred(3, 40)}) {
        expectLargeImageRight<Npp32f>(window, 2e-5);  // a last place of the largest partial means
    }
}

}  // namespace
}  // namespace zel::test
