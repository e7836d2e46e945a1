#include <gtest/gtest.h>
#include <host_device.h>
#include <tbb/global_control.h>
#include <thrust/device_vector.h>
#include <thrust/inner_product.h>
#include <thrust/transform_reduce.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "NonLocalMeans/DeviceAllocator.h"
#include "ThrustPolicy.h"

namespace zel::test {
namespace {

template <typename T>
using DeviceVector = thrust::device_vector<T, amnlm::DeviceAllocator<T>>;

struct Square {
    float operator()(float value) const { return value * value; }
};

struct Sums {
    float plain, squares, products;
    bool operator==(const Sums&) const = default;
};

Sums sumsOf(const DeviceVector<float>& a, const DeviceVector<float>& b) {
    using cuda::thrustPolicy;
    return {thrust::reduce(thrustPolicy, a.begin(), a.end(), 0.0f),
            thrust::transform_reduce(thrustPolicy, a.begin(), a.end(), Square{}, 0.0f, thrust::plus<float>()),
            thrust::inner_product(thrustPolicy, a.begin(), a.end(), b.begin(), 0.0f)};
}

// Magnitudes from 1e-3 to 1e3, so that another order is another sum.
std::vector<float> randomValues(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> exponent(-3.0f, 3.0f);
    std::vector<float> values(count);
    for (float& value : values) value = (random() & 1 ? 1.0f : -0.5f) * std::pow(10.0f, exponent(random));
    return values;
}

TEST(ThrustOrderTest, SumsHaveTheSameBitsForEveryNumberOfThreads) {
    for (const std::size_t count :
         {0, 1, 63, 64, 127, 128, 129, 4095, 4096, 4097, 16383, 16384, 16385, 20481, 300007}) {
        SCOPED_TRACE(count);
        const std::vector<float> valuesA = randomValues(count, 1), valuesB = randomValues(count, 2);
        const DeviceVector<float> a(valuesA), b(valuesB);
        double plain = 0, squares = 0, products = 0, magnitude = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const double x = valuesA[i], y = valuesB[i];
            plain += x, squares += x * x, products += x * y, magnitude += std::abs(x) + x * x + std::abs(x * y);
        }
        const Sums first = sumsOf(a, b);
        EXPECT_NEAR(first.plain, plain, 1e-6 * magnitude);
        EXPECT_NEAR(first.squares, squares, 1e-6 * magnitude);
        EXPECT_NEAR(first.products, products, 1e-6 * magnitude);
        for (const std::size_t threads : {1, 2}) {
            const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
            for (int run = 0; run < 8; ++run) EXPECT_EQ(sumsOf(a, b), first) << threads << " threads";
        }
    }
}

TEST(DeviceAllocatorTest, ExhaustedMemoryThrowsAndLeavesNoTrace) {
    const host::ScopedDevices small(1, std::uint64_t{1} << 20);
    const auto before = host::deviceUse();
    EXPECT_THROW(DeviceVector<float>(std::size_t{1} << 19), thrust::system::detail::bad_alloc);
    EXPECT_THROW(amnlm::DeviceAllocator<float>().allocate(SIZE_MAX / 2), std::bad_alloc);
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
    {
        const DeviceVector<float> fits(std::size_t{1} << 17, 1.5f);
        EXPECT_EQ(host::deviceUse().liveBytes, before.liveBytes + (std::uint64_t{1} << 19));
    }
    EXPECT_EQ(host::deviceUse().liveBytes, before.liveBytes);
}

TEST(DeviceAllocatorTest, FreeingAfterAResetIsSilent) {
    const host::ScopedTestModes modes({.strictReleases = true});
    {
        const DeviceVector<int> vector(100);
        ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
    }
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
}

}  // namespace
}  // namespace zel::test
