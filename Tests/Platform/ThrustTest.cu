#include <tbb/global_control.h>
#include <thrust/system_error.h>

#include <array>
#include <cmath>
#include <functional>
#include <random>

#include "DeviceFixture.h"
#include "DeviceVectorOperations.h"

namespace zel::test {
namespace {

using ThrustTest = host::DeviceTest;
using DeviceAllocatorTest = host::DeviceTest;

TEST_F(ThrustTest, IsWorkOfTheDeviceInEveryTestMode) {
    const host::TestModes modes[] = {
        {},
        {.deferredStreams = true},
        {.protectedMemory = true, .poison = true, .redZones = true},
        {.deferredStreams = true, .protectedMemory = true, .redZones = true, .strictReleases = true}};
    for (const host::TestModes& mode : modes) {
        const host::ScopedTestModes scoped(mode);
        for (const VectorOperation& operation : vectorOperations) {
            SCOPED_TRACE(testing::Message() << operation.name << " in mode " << &mode - modes);
            operation.run();
        }
    }
}

__global__ void addKernel(float* place, float value) {
    *place += value;
}

cudaError_t add(DeviceVector<float>& vector, float value, unsigned int blocks = 1) {
    const auto config = host::shape(dim3(blocks), dim3(1));
    return cudaLaunchKernelEx(&config, addKernel, thrust::raw_pointer_cast(vector.data()), value);
}

TEST_F(ThrustTest, ComesInTheOrderOfTheDefaultStream) {
    const host::ScopedTestModes late({.deferredStreams = true});
    DeviceVector<float> vector(1, 0.0f), other(1);
    const std::pair<float, std::function<float()>> readers[] = {
        {1, [&] { return thrust::reduce(vector.begin(), vector.end(), 0.0f); }},
        {2, [&] { return static_cast<float>(vector[0]); }},
        {3, [&] { return onHost(vector)[0]; }},
        {4, [&] { return *thrust::raw_pointer_cast((other = vector).data()); }},
        {25,
         [&] { return thrust::transform(vector.begin(), vector.end(), other.begin(), Square()), onHost(other)[0]; }},
    };
    for (const auto& [expected, read] : readers) {
        ASSERT_EQ(add(vector, 1), cudaSuccess);
        EXPECT_EQ(read(), expected);
    }
    ASSERT_EQ(add(vector, 1), cudaSuccess);
    vector[0] = 50;
    ASSERT_EQ(add(vector, 1), cudaSuccess);
    EXPECT_EQ(vector[0], 51);
}

int codeOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const thrust::system::system_error& error) {
        return error.code().value();
    }
    return cudaSuccess;
}

TEST_F(ThrustTest, IsCountedAndFailsAsTheVendorsDoes) {
    DeviceVector<float> vector(3, 1.0f);
    const Floats host(3);
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"thrust::for_each", [&] { DeviceVector<float>(3, 1.0f); }},
        {"thrust::for_each", [&] { thrust::fill(vector.begin(), vector.end(), 1.0f); }},
        {"thrust::for_each", [&] { thrust::transform(vector.begin(), vector.end(), vector.begin(), Square()); }},
        {"thrust::reduce", [&] { thrust::reduce(vector.begin(), vector.end()); }},
        {"thrust::reduce", [&] { thrust::inner_product(vector.begin(), vector.end(), vector.begin(), 0.0f); }},
        {"thrust::copy", [&] { DeviceVector<float>{vector}; }},
        {"thrust::copy", [&] { vector = host; }},
        {"thrust::copy", [&] { onHost(vector); }},
        {"thrust::copy", [&] { vector[0] = 1; }},
        {"thrust::copy", [&] { static_cast<void>(static_cast<float>(vector[0])); }},
    };
    const host::DeviceUse before = host::deviceUse();
    for (const auto& entry : calls) {
        const auto& [name, call] = entry;
        SCOPED_TRACE(testing::Message() << name << ", case " << &entry - calls);
        host::resetCallCounts();
        EXPECT_EQ(codeOf(call), cudaSuccess);
        EXPECT_EQ(host::callCount(name), 1u);
        host::injectFault({.call = name, .status = cudaErrorLaunchTimeout});
        EXPECT_EQ(codeOf(call), cudaErrorLaunchTimeout);
        EXPECT_EQ(cudaGetLastError(), cudaSuccess);
        host::injectFault({.call = name, .kind = host::FaultKind::failed});
        EXPECT_EQ(codeOf(call), cudaErrorLaunchFailure);
        EXPECT_ANY_THROW(call()) << "the error is sticky";
        host::clearFault();
        EXPECT_EQ(codeOf(call), cudaSuccess);
        EXPECT_EQ(host::deviceUse().liveBytes, before.liveBytes);
    }
}

// An error from before comes to light at the next launch of Thrust's; a copy loses it.
TEST_F(ThrustTest, TakesThePendingErrorAway) {
    DeviceVector<float> vector(1, 1.0f);
    for (const bool launches : {true, false}) {
        EXPECT_NE(add(vector, 1, 0), cudaSuccess);
        const auto action = [&] {
            launches ? thrust::reduce(vector.begin(), vector.end()) : static_cast<float>(vector[0]);
        };
        EXPECT_EQ(codeOf(action), launches ? cudaErrorInvalidConfiguration : cudaSuccess);
        EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    }
}

using Sums = std::array<float, 3>;

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

TEST_F(ThrustTest, SumsHaveTheSameBitsForEveryNumberOfThreads) {
    for (const std::size_t count :
         {0, 1, 63, 64, 127, 128, 129, 4095, 4096, 4097, 16383, 16384, 16385, 20481, 300007}) {
        SCOPED_TRACE(count);
        const std::vector<float> valuesA = randomValues(count, 1), valuesB = randomValues(count, 2);
        const DeviceVector<float> a(valuesA), b(valuesB);
        std::array<double, 3> exact{};
        double magnitude = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const double x = valuesA[i], y = valuesB[i];
            exact = {exact[0] + x, exact[1] + x * x, exact[2] + x * y};
            magnitude += std::abs(x) + x * x + std::abs(x * y);
        }
        const Sums first = sumsOf(a, b);
        for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(first[k], exact[k], 1e-6 * magnitude) << k;
        for (const std::size_t threads : {1, 2}) {
            const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
            for (int run = 0; run < 8; ++run) EXPECT_EQ(sumsOf(a, b), first) << threads << " threads";
        }
    }
}

TEST_F(DeviceAllocatorTest, ExhaustedMemoryThrowsAndLeavesNoTrace) {
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

TEST_F(DeviceAllocatorTest, FreeingAfterAResetIsSilent) {
    const host::ScopedTestModes modes({.strictReleases = true});
    {
        const DeviceVector<int> vector(100);
        ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
    }
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
}

}  // namespace
}  // namespace zel::test
