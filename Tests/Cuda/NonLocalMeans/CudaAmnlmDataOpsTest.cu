#include "NonLocalMeans/CudaAmnlmDataOps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "PlainAmnlm.h"

namespace zel::test {
namespace {

using Floats = std::vector<float>;
using amnlm::RkCUDAAMNLMData;

TEST(CudaAmnlmDataOpsTest, ElementsAreCombinedAlsoInPlace) {
    using Operation = void (*)(const RkCUDAAMNLMData&, const RkCUDAAMNLMData&, RkCUDAAMNLMData&);
    const float unit = 0x1p-23f, above = std::nextafter(unit, 1.0f), nan = std::numeric_limits<float>::quiet_NaN();
    const Floats a{1, 2, 3, 4, 5, 6}, b{-2, 0, unit, above, nan, 3};
    const struct {
        const char* name;
        Operation operation;
        Floats expected;
    } cases[] = {
        {"subtract", amnlm::subtractData, {3, 2, 3 - unit, 4 - above, nan, 3}},
        {"multiply", amnlm::multiplyData, {-2, 0, 3 * unit, 4 * above, nan, 18}},
        {"add", amnlm::addData, {-1, 2, 3 + unit, 4 + above, nan, 9}},
        {"divide", amnlm::divideData, {0, 0, 0, 4 / above, 0, 2}},
    };
    for (const auto& [name, operation, expected] : cases) {
        SCOPED_TRACE(name);
        AmnlmData first({1, 2, 3, 1}, a), second({1, 2, 3, 1}, b), out({1, 2, 3, 1});
        operation(first, second, out);
        operation(first, second, first);
        EXPECT_EQ(std::memcmp(out.values().data(), first.values().data(), out.byteSize()), 0);
        for (std::size_t i = 0; i < a.size(); ++i) {
            const float value = out.values()[i];
            EXPECT_TRUE(value == expected[i] || (std::isnan(value) && std::isnan(expected[i]))) << i << ": " << value;
        }
    }
}

TEST(CudaAmnlmDataOpsTest, ProductsAreAddedInAllChannels) {
    const AmnlmData a({1, 2, 3, 2}, uniformValues(12, -1, 1, 1)), b({1, 2, 3, 2}, uniformValues(12, -1, 1, 2));
    AmnlmData sum({1, 2, 3, 2}, uniformValues(12, -1, 1, 3));
    Floats expected = sum.values();
    for (std::size_t i = 0; i < 12; ++i) expected[i] += a.values()[i] * b.values()[i];
    amnlm::addProductData(a, b, sum);
    EXPECT_EQ(sum.values(), expected);
}

TEST(CudaAmnlmDataOpsTest, MaskKeepsItsElementsOnly) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const amnlm::DeviceVector<bool> mask(std::vector<bool>{true, false, true, false});
    AmnlmData data({1, 1, 4, 1}, {1, 2, -3, nan});
    amnlm::maskData(data, mask, data);
    EXPECT_EQ(data.values(), (Floats{1, 0, -3, 0}));
}

TEST(CudaAmnlmDataOpsTest, ChannelsAreJoinedAndTakenOut) {
    for (const auto& [nz, ny, nx] : {std::array{1, 1, 1}, {1, 3, 70}, {3, 9, 17}})
        for (const auto& [ca, cb] : {std::array{1, 1}, {4, 2}}) {
            const auto voxels = static_cast<std::size_t>(nz * ny * nx);
            const auto channelsA = static_cast<std::size_t>(ca), channelsB = static_cast<std::size_t>(cb);
            AmnlmData a({nz, ny, nx, ca}, uniformValues(voxels * channelsA, -1, 1, 1));
            AmnlmData b({nz, ny, nx, cb}, uniformValues(voxels * channelsB, -1, 1, 2));
            AmnlmData both({nz, ny, nx, ca + cb}), backA({nz, ny, nx, ca}), backB({nz, ny, nx, cb});
            amnlm::concatData(a, b, both);
            amnlm::extractData(both, 0, ca, backA);
            amnlm::extractData(both, ca, ca + cb, backB);
            EXPECT_EQ(backA.values(), a.values());
            EXPECT_EQ(backB.values(), b.values());
            const std::size_t last = (voxels - 1) * (channelsA + channelsB);
            EXPECT_EQ(both.values()[last], a.values()[(voxels - 1) * channelsA]);
            EXPECT_EQ(both.values()[last + channelsA], b.values()[(voxels - 1) * channelsB]);
        }
}

TEST(CudaAmnlmDataOpsTest, ScalesFirstOntoFirstAndLastOntoLast) {
    // More rows than a strip of a column has, more voxels than a bundle.
    const struct {
        AmnlmData::Extents from, to;
    } cases[] = {
        {{1, 9, 13, 1}, {1, 3, 4, 1}},   {{1, 5, 6, 4}, {1, 75, 90, 4}}, {{5, 6, 7, 2}, {2, 3, 3, 2}},
        {{2, 3, 4, 1}, {3, 70, 150, 1}}, {{3, 1, 1, 4}, {8, 5, 70, 4}},  {{4, 5, 6, 1}, {1, 1, 1, 1}},
        {{3, 8, 2, 3}, {5, 2, 33, 3}},   {{2, 2, 90, 2}, {2, 2, 40, 2}},
    };
    for (const auto& [from, to] : cases) {
        SCOPED_TRACE(testing::PrintToString(from) + " to " + testing::PrintToString(to));
        AmnlmData in(from), out(to);
        const Floats values = uniformValues(in.elementCount(), -1, 1, 3);
        in.upload(values);
        amnlm::scaleData(in, out);
        const Floats scaled = out.values();
        // Positions are rounded to 2^-24 of the axis; neighbours differ by at most 2.
        expectNear(scaled, plainScaled(values, from, to), 2e-5);
        EXPECT_EQ(scaled.front(), values.front());
        amnlm::scaleData(std::move(in), out);
        EXPECT_EQ(out.values(), scaled);
    }
}

TEST(CudaAmnlmDataOpsTest, EqualExtentsAreCopiedBitForBit) {
    Floats values = uniformValues(24, -1, 1, 4);
    values[5] = std::numeric_limits<float>::quiet_NaN();
    values[7] = -0.0f;
    AmnlmData in({2, 3, 4, 1}, values), out({2, 3, 4, 1});
    amnlm::scaleData(in, out);
    EXPECT_EQ(std::memcmp(out.values().data(), values.data(), out.byteSize()), 0);
    AmnlmData moved({2, 3, 4, 1});
    const float* const memory = in.data;
    amnlm::scaleData(std::move(in), moved);
    EXPECT_EQ(moved.data, memory) << "is no copy";
    EXPECT_EQ(std::memcmp(moved.values().data(), values.data(), moved.byteSize()), 0);
}

}  // namespace
}  // namespace zel::test
