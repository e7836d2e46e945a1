#pragma once

#include <cuda_runtime.h>

#include <cmath>
#include <cstdint>

#include "lanes.h"

// The rows of the products of spectra, in the precision of the pixel type.
namespace zel::cuda {

// A product's parts. In a sum of two products the second one is rounded first; a difference is of two rounded products.

struct Product {
    template <typename P>
    static __device__ __forceinline__ auto real(const P& a, const P& b) {
        return a.x * b.x - a.y * b.y;
    }
    template <typename P>
    static __device__ __forceinline__ auto imaginary(const P& a, const P& b) {
        return std::fma(a.y, b.x, a.x * b.y);
    }
};

/// Of a times the conjugate of b.
struct ConjugateProduct {
    template <typename P>
    static __device__ __forceinline__ auto real(const P& a, const P& b) {
        return std::fma(a.x, b.x, a.y * b.y);
    }
    template <typename P>
    static __device__ __forceinline__ auto imaginary(const P& a, const P& b) {
        return a.y * b.x - a.x * b.y;
    }
};

/// The products of two rows, times a scale where there is one. Stored part by part: `out` is apart from both.
template <typename Kind, typename P, typename... Scale>
__device__ __forceinline__ void multiplyRows(const P* a, const P* b, P* out, std::uint64_t width, Scale... scale) {
    forEachColumn(width, [=](std::uint64_t x) {
        out[x].x = (Kind::real(a[x], b[x]) * ... * scale);
        out[x].y = (Kind::imaginary(a[x], b[x]) * ... * scale);
    });
}

/// The same where `out` is one of the rows: both pixels are read before one is stored.
template <typename Kind, typename P, typename... Scale>
__device__ __forceinline__ void multiplyRowsInsitu(const P* a, const P* b, P* out, std::uint64_t width,
                                                   Scale... scale) {
    forEachColumn(width, [=](std::uint64_t x) {
        out[x] = P{(Kind::real(a[x], b[x]) * ... * scale), (Kind::imaginary(a[x], b[x]) * ... * scale)};
    });
}

}  // namespace zel::cuda
