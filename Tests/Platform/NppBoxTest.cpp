#include <host_device.h>

#include "Npp/BoxDivision.h"
#include "NppBoxSupport.h"

namespace zel::test {
namespace {

template <typename T>
T exactMean(const NppImage<T>& src, int x, int y, const Window& window) {
    return static_cast<T>(windowSum<host::Signed128>(src, x, y, window) / area(window));
}

template <typename T>
class NppBoxIntegerTest : public ::testing::Test {};
using IntegerTypes = ::testing::Types<Npp8u, Npp16u, Npp16s>;
TYPED_TEST_SUITE(NppBoxIntegerTest, IntegerTypes);

TYPED_TEST(NppBoxIntegerTest, MeansAreExactAndTruncatedForEveryMask) {
    using T = TypeParam;
    unsigned seed = 1;
    for (const NppiSize size : {NppiSize{1, 1}, NppiSize{5, 4}, NppiSize{33, 9}, NppiSize{7, 21}}) {
        for (const Window& window : windowsOfAllKinds()) {
            SCOPED_TRACE(::testing::Message() << size.width << " x " << size.height << ", mask " << window.mask.width
                                              << " x " << window.mask.height << ", anchor " << window.anchor.x << ", "
                                              << window.anchor.y << ", seed " << ++seed);
            NppImage<T> src(size);
            src.randomise(seed);
            const NppiPoint offset{size.width / 3, size.height / 4};
            NppImage<T> dst({size.width - offset.x, (size.height - offset.y + 1) / 2});
            filter(src, offset, dst, window);
            for (int y = 0; y < dst.size().height; ++y) {
                for (int x = 0; x < dst.size().width; ++x) {
                    ASSERT_EQ(dst.at(x, y), exactMean(src, offset.x + x, offset.y + y, window)) << x << ", " << y;
                }
            }
            EXPECT_TRUE(dst.paddingIntact());
        }
    }
}

TYPED_TEST(NppBoxIntegerTest, ExtremesDoNotOverflow) {
    using T = TypeParam;
    for (const T value : {std::numeric_limits<T>::max(), std::numeric_limits<T>::min(), T(1)}) {
        NppImage<T> src({40, 12}, value);
        for (const Window& window : windowsOfAllKinds()) {
            const NppImage<T> dst = filtered(src, window);
            for (int x = 0; x < 40; ++x)
                ASSERT_EQ(dst.at(x, 7), value) << window.mask.width << ", " << window.mask.height;
        }
    }
}

TEST(NppBoxTest, LargeImages) {
    for (const Window& window : {centred(15, 15), centred(51, 51), centred(3, 40)}) {
        expectLargeImageRight<Npp8u>(window, 0);
        expectLargeImageRight<Npp16u>(window, 0);
        expectLargeImageRight<Npp16s>(window, 0);
    }
}

// The quotient next to a multiple of the area is where a product with a reciprocal goes wrong.
template <typename Division, typename Pixel, typename Sum>
void expectExactDivision(std::int64_t divisor, std::int64_t quotient) {
    const Division division(static_cast<std::uint64_t>(divisor));
    for (std::int64_t sum = quotient * divisor - 1; sum <= quotient * divisor + 1; ++sum) {
        if (sum < divisor * std::numeric_limits<Pixel>::min() || sum > divisor * std::numeric_limits<Pixel>::max())
            continue;
        ASSERT_EQ(division.template divide<Pixel>(static_cast<Sum>(sum)), sum / divisor) << sum << " / " << divisor;
    }
}

TEST(NppBoxTest, DivisionsAreExactAtEveryStep) {
    for (std::int64_t divisor = 1; divisor <= 257; ++divisor) {
        for (std::int64_t q = 0; q <= 255; ++q) {
            expectExactDivision<host::ShortDivision, Npp8u, std::uint16_t>(divisor, q);
        }
    }
    for (std::int64_t divisor = 1; divisor < (1 << 14); divisor += divisor < 400 ? 1 : 13) {
        for (std::int64_t q = 0; q <= 255; ++q) {
            expectExactDivision<host::FloatDivision, Npp8u, std::uint32_t>(divisor, q);
        }
    }
    expectExactDivision<host::FloatDivision, Npp8u, std::uint32_t>((1 << 14) - 1, 255);
    for (const std::int64_t divisor : {1L, 3L, 225L, 2601L, 65536L, 65537L, 16777217L, (1L << 35) - 1}) {
        for (std::int64_t q = 0; q <= 65535; q += 5) {
            if (divisor <= 65536) {
                expectExactDivision<host::DoubleDivision, Npp16u, std::uint32_t>(divisor, q);
                expectExactDivision<host::DoubleDivision, Npp16s, std::uint32_t>(divisor, q - 32768);
            }
            expectExactDivision<host::DoubleDivision, Npp16u, std::uint64_t>(divisor, q);
            expectExactDivision<host::DoubleDivision, Npp16s, std::uint64_t>(divisor, q - 32768);
        }
    }
}

struct Call {
    const Npp16u* src;
    int srcStep;
    NppiSize srcSize{8, 6};
    NppiPoint srcOffset{0, 0};
    Npp16u* dst;
    int dstStep;
    NppiSize roi{8, 6};
    NppiSize mask{3, 3};
    NppiPoint anchor{1, 1};
    NppiBorderType border = NPP_BORDER_REPLICATE;

    NppStatus run() const {
        return nppiFilterBoxBorder_16u_C1R_Ctx(src, srcStep, srcSize, srcOffset, dst, dstStep, roi, mask, anchor,
                                               border, {});
    }
};

TEST(NppBoxTest, FaultyArgumentsGiveTheVendorsCodesAndWriteNothing) {
    NppImage<Npp16u> src({8, 6}, 1), dst({8, 6}, 2);
    std::vector<Npp16u> onHost(200);
    const auto expectStatus = [&](int status, auto change) {
        Call call{.src = src.device(), .srcStep = src.step(), .dst = dst.device(), .dstStep = dst.step()};
        change(call);
        EXPECT_EQ(call.run(), status);
    };
    expectStatus(-8, [](Call& c) { c.src = nullptr; });
    expectStatus(-8, [](Call& c) {
        c.dst = nullptr;
        c.roi = {0, 0};
    });
    expectStatus(-6, [](Call& c) { c.srcSize.width = 0; });
    expectStatus(-6, [](Call& c) { c.roi.height = -1; });
    expectStatus(-14, [](Call& c) { c.srcStep = 0; });
    expectStatus(-14, [](Call& c) { c.dstStep = -28; });
    expectStatus(-108, [](Call& c) { c.srcStep += 1; });
    expectStatus(-37, [](Call& c) { c.dstStep = 14; });
    expectStatus(-1020, [](Call& c) { c.srcOffset = {1, 0}; });
    expectStatus(-33, [](Call& c) { c.mask.width = 0; });
    expectStatus(-34, [](Call& c) { c.anchor.x = 3; });
    expectStatus(-34, [](Call& c) { c.anchor.y = -1; });
    expectStatus(-9999, [](Call& c) { c.border = NPP_BORDER_MIRROR; });
    expectStatus(-1031, [&](Call& c) { c.src = onHost.data(); });
    expectStatus(-1031, [](Call& c) { c.dst += 7; });
    dst.download();
    EXPECT_EQ(dst.at(3, 3), 2);
    expectStatus(0, [](Call&) {});
    dst.download();
    EXPECT_EQ(dst.at(3, 3), 1);
}

TEST(NppBoxTest, CallsAreCountedAndCanBeMadeToFail) {
    NppImage<Npp16u> src({8, 6}), dst({8, 6});
    const Call call{.src = src.device(), .srcStep = src.step(), .dst = dst.device(), .dstStep = dst.step()};
    host::resetCallCounts();
    host::injectFault({.call = "nppiFilterBoxBorder_16u_C1R_Ctx", .nth = 2, .status = NPP_MEMORY_ALLOCATION_ERR});
    EXPECT_EQ(call.run(), NPP_SUCCESS);
    EXPECT_EQ(call.run(), NPP_MEMORY_ALLOCATION_ERR);
    EXPECT_EQ(call.run(), NPP_SUCCESS);
    EXPECT_EQ(host::callCount("nppiFilterBoxBorder_16u_C1R_Ctx"), 3u);
    cudaGetLastError();
    host::clearFault();
}

}  // namespace
}  // namespace zel::test
