#include "Npp/Common/StoreLine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace zel::test {
namespace {

template <typename T>
class StoreLineTest : public ::testing::Test {};
using PixelTypes = ::testing::Types<std::uint8_t, std::uint16_t, float>;
TYPED_TEST_SUITE(StoreLineTest, PixelTypes);

TYPED_TEST(StoreLineTest, WritesAllItemsAndNothingElse) {
    constexpr std::ptrdiff_t size = 300;
    constexpr auto untouched = static_cast<TypeParam>(99);
    const auto item = [](std::ptrdiff_t i) { return static_cast<TypeParam>(i % 90); };
    for (const auto stores : {host::Stores::cached, host::Stores::streamed}) {
        for (std::ptrdiff_t begin = 0; begin != 64; ++begin) {
            for (const std::ptrdiff_t count : {0, 1, 15, 16, 63, 64, 65, 127, 200}) {
                alignas(64) std::array<TypeParam, size> line;
                line.fill(untouched);
                host::storeLine(stores, line.data() + begin, count, item);
                host::endStreaming();
                for (std::ptrdiff_t i = 0; i != size; ++i) {
                    const bool written = i >= begin && i < begin + count;
                    ASSERT_EQ(line[static_cast<std::size_t>(i)], written ? item(i - begin) : untouched)
                        << "item " << i << " of " << count << " from " << begin;
                }
            }
        }
    }
}

}  // namespace
}  // namespace zel::test
