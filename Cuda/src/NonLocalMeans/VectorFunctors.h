#pragma once

#include <cuda_runtime.h>

// What Thrust does with each element of a vector.
namespace amnlm {

template <typename T>
struct saxpy_functor {
    T a;
    __host__ __device__ T operator()(T x, T y) const { return a * x + y; }
};

template <typename T>
struct sscal_functor {
    T a;
    __host__ __device__ T operator()(T x) const { return a * x; }
};

template <typename T>
struct square_functor {
    __host__ __device__ T operator()(T x) const { return x * x; }
};

}  // namespace amnlm
