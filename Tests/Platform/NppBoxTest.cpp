#include <host_device.h>
#include <nppi_filtering_functions.h>
#include <tbb/global_control.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

#include "ExactSum.h"
#include "Npp/Box/BoxDivision.h"
#include "NppImage.h"

namespace zel::test {
namespace {

using Window = NppWindow;

Window centred(int width, int height) {
    return {{width, height}, {width / 2, height / 2}};
}

template <typename T>
constexpr auto boxFunction() {
    if constexpr (std::is_same_v<T, Npp8u>) return nppiFilterBoxBorder_8u_C1R_Ctx;
    if constexpr (std::is_same_v<T, Npp16u>) return nppiFilterBoxBorder_16u_C1R_Ctx;
    if constexpr (std::is_same_v<T, Npp16s>) return nppiFilterBoxBorder_16s_C1R_Ctx;
    if constexpr (std::is_same_v<T, Npp32f>) return nppiFilterBoxBorder_32f_C1R_Ctx;
}

/// Filters the region of dst's size at `origin` of src. The source image is what lies between two corners of src,
/// without them the whole.
template <typename T>
void filter(NppImage<T>& src, NppiPoint origin, NppImage<T>& dst, const Window& window, NppiPoint low = {0, 0},
            NppiPoint high = {0, 0}) {
    if (high.x == 0) high = {src.size().width, src.size().height};
    ASSERT_EQ(boxFunction<T>()(src.device(origin.x, origin.y), src.step(), {high.x - low.x, high.y - low.y},
                               {origin.x - low.x, origin.y - low.y}, dst.device(), dst.step(), dst.size(), window.mask,
                               window.anchor, NPP_BORDER_REPLICATE, {}),
              NPP_SUCCESS);
    dst.download();
}

/// How many of the positions first ... first + count - 1 take pixel i of n.
std::int64_t timesTaken(std::int64_t i, std::int64_t n, std::int64_t first, std::int64_t count) {
    const auto before = [&](std::int64_t position) { return std::clamp<std::int64_t>(position - first, 0, count); };
    return (i == n - 1 ? count : before(i + 1)) - (i == 0 ? 0 : before(i));
}

/// add(pixel, how often the window of source pixel (x, y) takes it), pixel by pixel of the image, so that huge masks
/// are quick.
template <typename T, typename Add>
void forEachTaken(const NppImage<T>& src, int x, int y, const Window& window, const Add& add) {
    const auto [width, height] = src.size();
    const auto& [mask, anchor] = window;
    for (int j = 0; j < height; ++j) {
        const std::int64_t rows = timesTaken(j, height, y - anchor.y, mask.height);
        for (int i = 0; i < width && rows != 0; ++i)
            add(src.at(i, j), rows * timesTaken(i, width, x - anchor.x, mask.width));
    }
}

/// Of integers the mean truncated, of floats the exact sum rounded and divided.
template <typename T>
T plainMean(const NppImage<T>& src, int x, int y, const Window& window) {
    const std::int64_t area = std::int64_t{window.mask.width} * window.mask.height;
    if constexpr (std::is_floating_point_v<T>) {
        ExactSum sum;
        forEachTaken(src, x, y, window, [&](T pixel, std::int64_t times) { sum.add(pixel, times); });
        return sum.rounded() / static_cast<T>(area);
    } else {
        host::Signed128 sum = 0;
        forEachTaken(src, x, y, window, [&](T pixel, std::int64_t times) { sum += host::Signed128{pixel} * times; });
        return static_cast<T>(sum / area);
    }
}

std::vector<Window> windowsOfAllKinds() {
    constexpr int huge = std::numeric_limits<int>::max();
    std::vector<Window> windows;
    // Areas on both sides of 257, 2^14, 2^16, 2^24 and 2^35: from there on sums are held in another type.
    constexpr NppiSize sizes[] = {{1, 1},       {3, 3},       {4, 2},          {1, 8},      {257, 1},
                                  {1, 258},     {2, 129},     {15, 15},        {51, 51},    {127, 129},
                                  {128, 128},   {5, 300},     {256, 256},      {257, 256},  {4097, 4096},
                                  {1000001, 3}, {3, 1000001}, {40000, 900000}, {huge, huge}};
    for (const auto& [width, height] : sizes) {
        windows.push_back(centred(width, height));
        windows.push_back({{width, height}, {0, height - 1}});
        windows.push_back({{width, height}, {width - 1, height / 3}});
    }
    return windows;
}

template <typename T>
class NppBoxTest : public ::testing::Test {};
using PixelTypes = ::testing::Types<Npp8u, Npp16u, Npp16s, Npp32f>;
TYPED_TEST_SUITE(NppBoxTest, PixelTypes);

// Each window meets random pixels and, of integers, the extreme ones, whose sums are the first to overflow.
TYPED_TEST(NppBoxTest, MeansAreRightForEveryMask) {
    using T = TypeParam;
    constexpr bool isInteger = !std::is_floating_point_v<T>;
    unsigned seed = 1;
    for (const NppiSize size : {NppiSize{1, 1}, NppiSize{5, 4}, NppiSize{33, 9}, NppiSize{7, 21}}) {
        for (const Window& window : windowsOfAllKinds()) {
            SCOPED_TRACE(::testing::Message()
                         << size.width << " x " << size.height << ", " << window << ", seed " << ++seed);
            auto src = NppImage<T>::random(size, seed);
            if (isInteger && seed % 4 < 2)
                src = NppImage<T>(size, seed % 4 == 0 ? std::numeric_limits<T>::max() : std::numeric_limits<T>::min());
            const NppiPoint offset{size.width / 3, size.height / 4};
            NppImage<T> dst({size.width - offset.x, (size.height - offset.y + 1) / 2});
            filter(src, offset, dst, window);
            dst.expectEach(
                [&](T mean, int x, int y) { ASSERT_EQ(mean, plainMean(src, offset.x + x, offset.y + y, window)); });
        }
    }
}

/// Of an image larger than the pieces that rows are cut into. Both ways to cut: a region of the whole image, and a tile
/// with margins as an image of its own.
template <typename T>
void expectPartsLikeTheWhole(NppImage<T>& src, const Window& window) {
    SCOPED_TRACE(::testing::Message() << window);
    const auto [width, height] = src.size();
    const NppiPoint anchor = window.anchor;
    NppImage<T> whole(src.size());
    filter(src, {0, 0}, whole, window);
    whole.expectEach([](T, int, int) {});
    for (int top = 0; top < height; top += 53)
        for (int left = 0; left < width; left += 901) {
            NppImage<T> region({std::min(901, width - left), std::min(53, height - top)}), tile(region.size());
            filter(src, {left, top}, region, window);
            filter(src, {left, top}, tile, window, {std::max(0, left - anchor.x), std::max(0, top - anchor.y)},
                   {std::min(width, left + 901 + anchor.x), std::min(height, top + 53 + anchor.y)});
            for (int y = 0; y < tile.size().height; ++y)
                for (const auto* part : {&region, &tile})
                    ASSERT_EQ(std::memcmp(&part->at(0, y), &std::as_const(whole).at(left, top + y),
                                          sizeof(T) * static_cast<std::size_t>(tile.size().width)),
                              0)
                        << left << ", " << top + y;
        }
}

TYPED_TEST(NppBoxTest, PartsHaveTheBitsOfTheWhole) {
    auto src = NppImage<TypeParam>::random({4500, 260}, 11);
    for (const Window& window :
         {centred(3, 3), centred(4, 6), centred(15, 15), centred(51, 51), centred(63, 2), centred(17, 64)})
        expectPartsLikeTheWhole(src, window);
}

/// A kind of pixels that is hard to sum.
struct HardPixels {
    const char* name;
    std::function<float(std::mt19937&, int x)> pixel;
};

std::vector<HardPixels> hardPixels() {
    constexpr float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const auto oneOf = [](const std::vector<float>& values) {
        return [=](std::mt19937& random, int) { return values[random() % values.size()]; };
    };
    const auto bits = [](std::uint32_t kept, std::uint32_t set) {
        return [=](std::mt19937& random, int) {
            return std::bit_cast<float>((static_cast<std::uint32_t>(random()) & kept) | set);
        };
    };
    const auto normal = [](std::mt19937& random, int) { return std::normal_distribution<float>()(random); };
    const auto rarely = [=](float value, unsigned times) {
        return [=](std::mt19937& random, int x) { return random() % times == 0 ? value : normal(random, x); };
    };
    return {
        {"normal", normal},
        {"of 8 decades", [=](std::mt19937& random, int x) { return std::exp(4.0f * normal(random, x)); }},
        {"of any exponent", bits(0xBFFFFFFF, 0)},
        {"of any exponent but huge", bits(0xFFFFFFFF & ~0x08000000U, 0)},
        {"powers of two", bits(0xBF800000, 0)},
        {"denormal", bits(0x807FFFFF, 0)},
        {"of any bits", bits(0xFFFFFFFF, 0)},
        {"cancelling", oneOf({1e30f, -1e30f, 1.0f, -1.0f, 1e-30f})},
        // Below 1 the unit of sums of 3 x 3 pixels is 2^-47.
        {"cancelling across parts",
         [=](std::mt19937& random, int x) {
             const auto part = oneOf({0x1p-46f, -0x1p-46f, 0x1p-48f, -0x1p-48f, 0x1p-49f, -0x1p-49f, 0x1.234568p-100f});
             return random() % 100 == 0 ? 1.0f : part(random, x);
         }},
        {"next to ties of two parts", oneOf({1.0f, 0x1p-24f, -0x1p-24f, 0x1p-50f, -0x1p-50f, 0x1p-78f, -0x1p-78f})},
        {"next to ties of some", oneOf({1.0f, 0x1p-24f, -0x1p-24f, 0x1p-54f, -0x1p-90f, 0x1p-90f})},
        {"next to ties of many", oneOf({1.0f, 0x1p-24f, -0x1p-24f, 0x1p-54f, -0x1p-149f, 0x1p-149f})},
        {"beyond the largest", oneOf({3.4e38f, 3.4e38f, -3.4e38f, 1.0f})},
        {"zeros", oneOf({0.0f, -0.0f})},
        {"with an outlier", rarely(1e30f, 300)},
        {"with tiny ones", rarely(1e-30f, 100)},
        {"with infinities", rarely(infinity, 300)},
        {"with NaN", rarely(nan, 300)},
        {"with columns of both infinities",
         [=](std::mt19937& random, int x) { return x == 5    ? infinity
                                                   : x == 12 ? -infinity
                                                             : normal(random, x); }},
    };
}

NppImage<float> imageOf(const HardPixels& kind, NppiSize size, unsigned seed) {
    NppImage<float> image(size);
    std::mt19937 random(seed);
    image.fillWith([&](int x, int) { return kind.pixel(random, x); });
    return image;
}

TEST(NppBoxFloatTest, MeansAreExactSumsRoundedOnceAndDivided) {
    unsigned seed = 1;
    for (const HardPixels& kind : hardPixels())
        for (const NppiSize size : {NppiSize{41, 23}, NppiSize{6, 30}})
            for (const Window& window : {centred(1, 1), centred(3, 3), Window{{21, 10}, {4, 7}}, centred(51, 51),
                                         centred(1, 700), centred(4097, 4096)}) {
                SCOPED_TRACE(::testing::Message() << "pixels " << kind.name << ", " << window << ", seed " << ++seed);
                auto src = imageOf(kind, size, seed);
                NppImage<float> dst(size);
                filter(src, {0, 0}, dst, window);
                dst.expectEach([&](float mean, int x, int y) {
                    const float expected = plainMean(src, x, y, window);
                    if (std::isnan(expected) && std::isnan(mean)) return;
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(mean), std::bit_cast<std::uint32_t>(expected))
                        << mean << " is not " << expected << " at " << x << ", " << y;
                });
            }
}

// A lowest digit around each limit of what doubles hold in so many parts, below the largest sums and differences of
// sums that there can be. Where the fields of a chequerboard cancel, only that digit is left.
TEST(NppBoxFloatTest, LimitsOfDoublesHold) {
    std::mt19937 random(4);
    for (const Window& window : {centred(4, 4), centred(2, 64), centred(64, 2), centred(16, 1), centred(512, 512)}) {
        const int areaBits = std::countr_zero(static_cast<unsigned>(window.mask.width * window.mask.height));
        // The largest pixel lies below 2^101, what one more part holds of it below 2^(common + 1).
        int common = 100;
        for (int unit = 100 + areaBits - 51; unit > -140; common = unit - 2, unit += areaBits - 53)
            for (int lowest = unit - 3; lowest <= unit + 2; ++lowest) {
                SCOPED_TRACE(::testing::Message() << window << ", pixels of 2^" << common << " and 2^" << lowest);
                NppImage<float> src({35, 20}), dst(src.size());
                src.fillWith([&](int x, int y) {
                    if (random() % 40 == 0) return std::ldexp(3.0f, lowest);
                    const float pixel = std::ldexp(0x1.fffffep0f, random() % 200 == 0 ? 100 : common);
                    return (x / 8 + y / 8) % 2 == 0 ? pixel : -pixel;
                });
                filter(src, {0, 0}, dst, window);
                dst.expectEach([&](float mean, int x, int y) { ASSERT_EQ(mean, plainMean(src, x, y, window)); });
            }
    }
}

// Where the fields cancel, only the few pixels are left that one sum of doubles cannot hold beside them.
TEST(NppBoxFloatTest, FewPixelsMayHaveLowDigits) {
    NppImage<float> src({200, 160});
    src.fillWith([](int x, int y) { return (x + y) % 2 == 0 ? 1.0f : -1.0f; });
    for (const auto& [x, y] : {std::pair(0, 0), {0, 30}, {90, 0}, {91, 0}, {92, 31}, {199, 159}, {150, 159}, {199, 97}})
        src.at(x, y) = 0x1.8p-60f, src.at(x, y ^ 1) = 0;
    src.upload();
    for (const Window& window : {centred(4, 4), centred(3, 3), centred(50, 50), centred(2, 300),
                                 Window{{500, 2}, {9, 1}}, Window{{16, 8}, {15, 0}}, centred(900, 900)}) {
        SCOPED_TRACE(::testing::Message() << window);
        const NppiPoint offset{1, 2};
        NppImage<float> dst({199, 155});
        filter(src, offset, dst, window);
        dst.expectEach([&](float mean, int x, int y) { ASSERT_EQ(mean, plainMean(src, x + 1, y + 2, window)); }, 29);
    }
}

// What the rows so far were summed by is not enough for the next one, or more than it needs.
TEST(NppBoxFloatTest, RowsMayHaveOtherExponentsThanThoseAbove) {
    const std::pair<const char*, int (*)(int y)> exponents[] = {{"rising", [](int y) { return y - 126; }},
                                                                {"falling", [](int y) { return 120 - y; }},
                                                                {"in steps", [](int y) { return y / 90 * 17; }},
                                                                {"in waves", [](int y) { return (y / 9) % 2 * -40; }},
                                                                {"denormal at last", [](int y) { return -y / 2; }}};
    for (const auto& [name, exponentOfRow] : exponents) {
        std::mt19937 random(7);
        NppImage<float> src({90, 240}), dst(src.size());
        src.fillWith([&, ofRow = exponentOfRow](int, int y) {
            // The further down, the more pixels have lower digits than the others.
            const int lower = static_cast<int>(random() % 20000) < y ? 35 : 0;
            return y % 40 > 36 ? 0.0f : std::ldexp(std::normal_distribution<float>()(random), ofRow(y) - lower);
        });
        for (const Window& window : {centred(3, 3), centred(16, 16), Window{{7, 51}, {2, 50}}}) {
            SCOPED_TRACE(::testing::Message() << "exponents " << name << ", " << window);
            filter(src, {0, 0}, dst, window);
            dst.expectEach([&](float mean, int x, int y) { ASSERT_EQ(mean, plainMean(src, x, y, window)); }, 7);
        }
    }
}

// Blocks of pixels are summed in different ways here, and parts of the image in other blocks.
TEST(NppBoxFloatTest, BitsDoNotDependOnWhatElseIsInTheImage) {
    const auto kinds = hardPixels();
    NppImage<float> src({3000, 500});
    std::mt19937 random(12);
    const auto draw = [&](int x, int y) {
        const std::size_t kind = y % 100 < 50 ? 0 : static_cast<std::size_t>(x / 300 + y / 100 * 3) % kinds.size();
        return kinds[random() % 50 == 0 ? kind : 0].pixel(random, x);
    };
    src.fillWith(draw);
    for (const Window& window : {centred(3, 3), centred(51, 51), centred(8, 100)}) {
        expectPartsLikeTheWhole(src, window);
        NppImage<float> byOne(src.size()), byAll(src.size());
        filter(src, {0, 0}, byAll, window);
        const tbb::global_control oneThread(tbb::global_control::max_allowed_parallelism, 1);
        filter(src, {0, 0}, byOne, window);
        byAll.expectEach([&](float mean, int x, int y) {
            ASSERT_EQ(std::bit_cast<std::uint32_t>(mean), std::bit_cast<std::uint32_t>(std::as_const(byOne).at(x, y)));
        });
    }
}

// One in ten changes by a last place, as c * n is rounded before it is divided.
TEST(NppBoxFloatTest, ConstantImagesStayConstant) {
    std::mt19937 random(3);
    for (const Window& window : {centred(3, 3), centred(15, 15), centred(51, 51), centred(16, 8)})
        for (int i = 0; i < 60; ++i) {
            const auto area = static_cast<float>(window.mask.width * window.mask.height);
            const float constant =
                i % 2 == 0 ? static_cast<float>(random() % 6000)
                           : std::bit_cast<float>(0x3F800000U | (static_cast<std::uint32_t>(random()) & 0x7FFFFF));
            NppImage<float> src({90, 70}, constant), dst(src.size());
            filter(src, {0, 0}, dst, window);
            int exponent = 0;
            const bool kept = i % 2 == 0 || std::frexp(area, &exponent) * constant < 1.0f;
            dst.expectEach([&](float mean, int, int) {
                ASSERT_EQ(mean, area * constant / area);
                ASSERT_TRUE(!kept || mean == constant);
                ASSERT_NEAR(mean, constant, 0x1p-23 * constant);
            });
        }
    EXPECT_NE(1.9f * 9.0f / 9.0f, 1.9f) << "no better can be had by rounding the sum";
}

/// Of the sums around each multiple of the area that gives a pixel, or each one in so many: there a product with a
/// reciprocal goes wrong.
template <typename Division, typename Pixel, typename Sum>
void expectExact(std::int64_t area, int step = 1) {
    const Division division(static_cast<std::uint64_t>(area));
    constexpr std::int64_t low = std::numeric_limits<Pixel>::min(), high = std::numeric_limits<Pixel>::max();
    for (std::int64_t q = low; q <= high; q += step)
        for (std::int64_t sum = std::max(q * area - 1, low * area); sum <= std::min(q * area + 1, high * area); ++sum)
            ASSERT_EQ(division.template divide<Pixel>(static_cast<Sum>(sum)), sum / area) << sum << " / " << area;
}

TEST(NppBoxDivisionTest, IsExactAtEveryStep) {
    using namespace host;
    for (std::int64_t area = 1; area <= 257; ++area) expectExact<ShortDivision, Npp8u, std::uint16_t>(area);
    for (std::int64_t area = 1; area < 400; ++area) expectExact<FloatDivision, Npp8u, std::uint32_t>(area);
    for (std::int64_t area = FloatDivision::maxArea; area > 400; area -= 13)
        expectExact<FloatDivision, Npp8u, std::uint32_t>(area);
    for (const std::int64_t area : {1L, 3L, 225L, 2601L, 65536L, 65537L, 16777217L, (1L << 35) - 1}) {
        if (area <= 65536) expectExact<DoubleDivision, Npp16u, std::uint32_t>(area, 5);
        if (area <= 65536) expectExact<DoubleDivision, Npp16s, std::uint32_t>(area, 5);
        expectExact<DoubleDivision, Npp16u, std::uint64_t>(area, 5);
        expectExact<DoubleDivision, Npp16s, std::uint64_t>(area, 5);
    }
}

}  // namespace
}  // namespace zel::test
