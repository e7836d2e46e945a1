#pragma once

#include <gtest/gtest.h>
#include <thrust/copy.h>
#include <thrust/fill.h>
#include <thrust/host_vector.h>
#include <thrust/inner_product.h>
#include <thrust/reduce.h>
#include <thrust/transform.h>
#include <thrust/transform_reduce.h>

#include "NonLocalMeans/DeviceVector.h"
#include "ThrustPolicy.h"

/// What the back end does with Thrust, each with its result checked: on every platform and in every test mode the same.
namespace zel::test {

using amnlm::DeviceVector;

template <typename T>
std::vector<T> onHost(const DeviceVector<T>& vector) {
    std::vector<T> values(vector.size());
    thrust::copy(vector.begin(), vector.end(), values.begin());
    return values;
}

struct Square {
    __host__ __device__ float operator()(float x) const { return x * x; }
};
using Floats = std::vector<float>;

inline void makeVectors() {
    EXPECT_EQ(onHost(DeviceVector<float>(3, 1.5f)), Floats(3, 1.5f));
    EXPECT_EQ(onHost(DeviceVector<float>(20000)), Floats(20000));
    const DeviceVector<float> vector(Floats{1, 2, 3});
    EXPECT_EQ(onHost(DeviceVector<float>(vector)), (Floats{1, 2, 3}));
    EXPECT_EQ(onHost(DeviceVector<float>(vector.begin() + 1, vector.end())), (Floats{2, 3}));
    EXPECT_TRUE(DeviceVector<bool>().empty());
    EXPECT_EQ(onHost(DeviceVector<int>(vector)), (std::vector<int>{1, 2, 3}));
}

inline void fillVectors() {
    DeviceVector<float> vector(4, 1.0f);
    float* const raw = thrust::raw_pointer_cast(vector.data());
    thrust::fill(vector.begin() + 1, vector.end(), 2.0f);
    thrust::fill(cuda::thrustPolicy, raw + 2, raw + 4, 3.0f);
    EXPECT_EQ(onHost(vector), (Floats{1, 2, 3, 3}));
    thrust::fill_n(thrust::device_pointer_cast(raw), 1, 4.0f);
    EXPECT_EQ(onHost(vector), (Floats{4, 2, 3, 3}));
}

inline void transformVectors() {
    using cuda::thrustPolicy;
    using namespace thrust::placeholders;
    const DeviceVector<float> a(Floats{1, -2, 3}), b(Floats{10, 20, 30});
    DeviceVector<float> result(3);
    DeviceVector<bool> negative(3);
    thrust::transform(thrustPolicy, a.begin(), a.end(), result.begin(), Square());
    EXPECT_EQ(onHost(result), (Floats{1, 4, 9}));
    thrust::transform(thrustPolicy, result.begin(), result.end(), b.begin(), result.begin(), 2 * _1 - _2);
    EXPECT_EQ(onHost(result), (Floats{-8, -12, -12}));
    thrust::transform(thrustPolicy, a.begin(), a.end(), negative.begin(), _1 < 0);
    EXPECT_EQ(onHost(negative), (std::vector<bool>{false, true, false}));
    thrust::transform(thrustPolicy, b.begin(), b.end(), negative.begin(), result.begin(), _1 * _2);
    EXPECT_EQ(onHost(result), (Floats{0, 20, 0}));
}

inline void reduceVectors() {
    using cuda::thrustPolicy;
    const DeviceVector<float> a(Floats{1, -2, 3}), b(Floats{10, 20, 30});
    EXPECT_EQ(thrust::reduce(thrustPolicy, a.begin(), a.end(), 5.0f), 7);
    EXPECT_EQ(thrust::reduce(a.begin(), a.begin(), 5.0f), 5);
    EXPECT_EQ(thrust::transform_reduce(thrustPolicy, a.begin(), a.end(), Square(), 0.0f, thrust::plus<float>()), 14);
    EXPECT_EQ(thrust::inner_product(thrustPolicy, a.begin(), a.end(), b.begin(), 0.0f), 60);
    const DeviceVector<int> many(100000, 1);
    EXPECT_EQ(thrust::reduce(thrustPolicy, many.begin(), many.end()), 100000);
}

inline void copyVectors() {
    DeviceVector<float> vector(3), other;
    vector = thrust::host_vector<float>(3, 4.0f);
    EXPECT_EQ(onHost(vector), Floats(3, 4.0f));
    const Floats values{5, 6};
    thrust::copy(values.begin(), values.end(), vector.begin() + 1);
    other = vector;
    thrust::copy(vector.begin() + 1, vector.end(), other.begin());
    EXPECT_EQ(onHost(other), (Floats{5, 6, 6}));
    const thrust::host_vector<float> back = other;
    EXPECT_EQ(back[1], 6);
    other.resize(5);
    other.resize(2);
    other.insert(other.begin(), 7.0f);
    EXPECT_EQ(onHost(other), (Floats{7, 5, 6}));
}

inline void accessElements() {
    DeviceVector<float> vector(Floats{1, 2, 3});
    vector[0] = 8;
    vector[1] = vector[2];
    *(vector.begin() + 2) = 9;
    vector[2] += 1;
    const float last = vector.back();
    EXPECT_EQ(last, 10);
    EXPECT_EQ(*(vector.begin() + 1), 3);
    EXPECT_EQ(onHost(vector), (Floats{8, 3, 10}));
}

struct VectorOperation {
    const char* name;
    void (*run)();
};
inline constexpr VectorOperation vectorOperations[] = {
    {"make", makeVectors},     {"fill", fillVectors}, {"transform", transformVectors},
    {"reduce", reduceVectors}, {"copy", copyVectors}, {"access", accessElements},
};

}  // namespace zel::test
