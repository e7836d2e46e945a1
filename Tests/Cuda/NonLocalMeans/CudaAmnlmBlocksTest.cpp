#include "NonLocalMeans/CudaAmnlmBlocks.h"

#include <array>
#include <cmath>
#include <limits>
#include <numeric>

#include "AmnlmData.h"
#include "Messages.h"
#include "TestImages.h"

namespace zel::test {
namespace {

using amnlm::BlockIterator;
using amnlm::Region;

std::array<int, 6> bounds(const Region& r) {
    return {r.xLow, r.xHigh, r.yLow, r.yHigh, r.zLow, r.zHigh};
}

TEST(CudaAmnlmBlocksTest, CoresTileTheImageXFirst) {
    BlockIterator walk({5, 4, 2}, {2, 4, 1});
    EXPECT_EQ(amnlm::countBlocks(walk), 6U);
    std::vector<std::array<int, 6>> cores;
    while (walk.next()) cores.push_back(bounds(walk.core()));
    EXPECT_EQ(cores, (std::vector<std::array<int, 6>>{{0, 1, 0, 3, 0, 0},
                                                      {2, 3, 0, 3, 0, 0},
                                                      {4, 4, 0, 3, 0, 0},
                                                      {0, 1, 0, 3, 1, 1},
                                                      {2, 3, 0, 3, 1, 1},
                                                      {4, 4, 0, 3, 1, 1}}));
    constexpr int maxExtent = std::numeric_limits<int>::max();
    EXPECT_EQ(amnlm::countBlocks(BlockIterator({maxExtent, 1, 1}, {maxExtent - 1, 1, 1})), 2U);
}

TEST(CudaAmnlmBlocksTest, RegionsAreWidenedUpToTheImage) {
    const Region image({0, 0, 0}, {99, 49, 0}), core({20, 0, 0}, {10, 9, 0});
    EXPECT_EQ(bounds(core), (std::array{10, 20, 0, 9, 0, 0}));
    EXPECT_EQ(bounds(amnlm::extendedRegion(core, 5, image)), (std::array{5, 25, 0, 14, 0, 0}));
    EXPECT_EQ(bounds(amnlm::extendedRegion(core, std::numeric_limits<int>::max(), image)), bounds(image));
}

template <typename T>
void expectRoundTrip() {
    SCOPED_TRACE(voxelTypeName(voxelTypeOf<T>));
    HostImage image(voxelTypeOf<T>, {7, 5, 3});
    std::iota(voxels<T>(image), voxels<T>(image) + 105, T{});
    const Region extended({1, 1, 0}, {5, 4, 2}), core({2, 2, 1}, {5, 3, 2});
    AmnlmData block({3, 4, 5, 1});
    amnlm::readBlock(&image, 0, 128, extended, block);
    EXPECT_EQ(block.values()[0], 8 / 128.0f);
    EXPECT_EQ(block.values()[59], (2 * 35 + 4 * 7 + 5) / 128.0f);

    HostImage target(voxelTypeOf<T>, {7, 5, 3});
    amnlm::writeBlock(&target, 0, 128, block, extended, core);
    std::vector<T> expected(105);
    for (const std::size_t row : {1 * 5 + 2, 1 * 5 + 3, 2 * 5 + 2, 2 * 5 + 3})  // those of the core
        for (std::size_t i = row * 7 + 2; i <= row * 7 + 5; ++i) expected[i] = static_cast<T>(i);
    EXPECT_EQ(readAll<T>(target), expected) << "the core and nothing else";
}

TEST(CudaAmnlmBlocksTest, AllTypesAreReadScaledAndWrittenBack) {
    []<typename... T>(TypeList<T...>) { (expectRoundTrip<T>(), ...); }(KernelTypes{});
}

/// What values become as voxels, from a range of 0 to 1.
template <typename T>
std::vector<T> written(const std::vector<float>& values) {
    const auto width = static_cast<std::int32_t>(values.size());
    AmnlmData data({1, 1, width, 1}, values);
    HostImage image(voxelTypeOf<T>, {values.size(), 1, 1});
    const Region all({0, 0, 0}, {width - 1, 0, 0});
    amnlm::writeBlock(&image, 0, 1, data, all, all);
    return readAll<T>(image);
}

TEST(CudaAmnlmBlocksTest, WritingTruncatesAndKeepsLowBits) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> values{254.99f, -1.5f, 65537.5f, 3e9f, -3e9f, nan};
    EXPECT_EQ(written<std::uint8_t>(values), (std::vector<std::uint8_t>{254, 255, 1, 255, 0, 0}));
    EXPECT_EQ(written<std::int8_t>(values), (std::vector<std::int8_t>{-2, -1, 1, -1, 0, 0}));
    EXPECT_EQ(written<std::uint16_t>(values), (std::vector<std::uint16_t>{254, 65535, 1, 65535, 0, 0}));
    EXPECT_EQ(written<std::int16_t>(values), (std::vector<std::int16_t>{254, -1, 1, -1, 0, 0}));
    EXPECT_EQ(written<std::uint32_t>(values),
              (std::vector<std::uint32_t>{254, 4294967295U, 65537, 3000000000U, 1294967296U, 0}));
    EXPECT_EQ(written<std::int32_t>(values),
              (std::vector<std::int32_t>{254, -1, 65537, 2147483647, -2147483647 - 1, 0}));
    EXPECT_EQ(written<double>(values), (std::vector<double>{254.99f, -1.5f, 65537.5f, 3e9f, -3e9f, 0}));
    // NaN is 0 whatever the range.
    HostImage image = randomImage<float>({1, 1, 1}, 1);
    amnlm::writeBlock(&image, 5, 9, AmnlmData({1, 1, 1, 1}, {nan}), Region(), Region());
    EXPECT_EQ(readAll<float>(image), std::vector<float>{0});
}

TEST(CudaAmnlmBlocksTest, RowsThatFailAreNamed) {
    RowsOnlyImage image(HostImage(VoxelTypes::uint8, {6, 40, 2}), 17);
    const Region region({2, 3, 1}, {5, 39, 1});
    AmnlmData block({1, 37, 4, 1});
    const std::string place = " a row at the coordinates (2, 17, 1, 0, 0) in the image (6, 40, 2, 1, 1)";
    EXPECT_EQ(messageOf([&] { amnlm::readBlock(&image, 0, 1, region, block); }), "Cannot read" + place);
    EXPECT_EQ(messageOf([&] { amnlm::writeBlock(&image, 0, 1, block, region, region); }), "Cannot write" + place);
    HostImage odd(VoxelTypes::complex64, {6, 40, 2});
    EXPECT_EQ(messageOf<UnexpectedError>([&] { amnlm::readBlock(&odd, 0, 1, region, block); }),
              "Unsupported primitive type");
}

}  // namespace
}  // namespace zel::test
