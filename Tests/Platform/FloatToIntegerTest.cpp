#include <FloatToInteger.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace zel {
namespace {

template <class Float>
class FloatToIntegerTest : public ::testing::Test {};
using Floats = ::testing::Types<float, double>;
TYPED_TEST_SUITE(FloatToIntegerTest, Floats);

/// Independent of the code under test: by comparison in long double, which holds all values exactly.
template <class To, class From>
To saturated(From value) {
    using Limits = std::numeric_limits<To>;
    return std::isnan(value)
               ? 0
               : static_cast<To>(std::clamp<long double>(std::trunc(value), Limits::min(), Limits::max()));
}

/// Limits and their neighbours, then random bit patterns, which cover all exponents and NaN.
template <class Float>
std::vector<Float> interestingValues() {
    constexpr Float infinity = std::numeric_limits<Float>::infinity();
    std::vector<Float> values{0, Float(-0.0), std::numeric_limits<Float>::quiet_NaN(), infinity, -infinity};
    for (const double limit :
         {0.5, 1.0, 127.0, 255.0, 256.0, 65536.0, 0x1p31, 0x1p31 - 1, 0x1p32, 0x1p32 - 1, 0x1p63, 0x1p64})
        for (const Float signedLimit : {static_cast<Float>(limit), static_cast<Float>(-limit)})
            values.insert(values.end(),
                          {signedLimit, std::nextafter(signedLimit, infinity), std::nextafter(signedLimit, -infinity)});
    std::mt19937_64 random(5);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        values.push_back(static_cast<Float>(static_cast<double>(bits >> 31) * 0.7 - 3e9));
        std::memcpy(&values.emplace_back(), &bits, sizeof(Float));
    }
    return values;
}

TYPED_TEST(FloatToIntegerTest, SaturatesAtThirtyTwoBitsAndKeepsTheLowOnes) {
    for (const TypeParam value : interestingValues<TypeParam>()) {
        SCOPED_TRACE(::testing::Message() << std::hexfloat << value);
        const auto asSigned = saturated<std::int32_t>(value);
        const auto asUnsigned = saturated<std::uint32_t>(value);
        ASSERT_EQ(truncateToInt32(value), asSigned);
        ASSERT_EQ(truncateToUint32(value), asUnsigned);
        ASSERT_EQ(truncateTo<std::int16_t>(value), static_cast<std::int16_t>(asSigned));
        ASSERT_EQ(truncateTo<std::uint8_t>(value), static_cast<std::uint8_t>(asUnsigned));
        ASSERT_EQ(truncateTo<std::int64_t>(value), saturated<std::int64_t>(value));
        ASSERT_EQ(truncateTo<std::uint64_t>(value), saturated<std::uint64_t>(value));
    }
}

}  // namespace
}  // namespace zel
