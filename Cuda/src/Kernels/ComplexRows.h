#pragma once

#include <cuda_runtime.h>

#include <cmath>

// The arithmetic of one pixel of the products of spectra, in the precision of the pixel type. In a sum of two products
// the second one is rounded first; a difference is of two rounded products.
namespace zel::cuda {

template <typename P>
__device__ __forceinline__ auto realOfProduct(const P& a, const P& b) {
    return a.x * b.x - a.y * b.y;
}
template <typename P>
__device__ __forceinline__ auto imaginaryOfProduct(const P& a, const P& b) {
    return std::fma(a.y, b.x, a.x * b.y);
}

/// Of a times the conjugate of b.
template <typename P>
__device__ __forceinline__ auto realOfConjugateProduct(const P& a, const P& b) {
    return std::fma(a.x, b.x, a.y * b.y);
}
template <typename P>
__device__ __forceinline__ auto imaginaryOfConjugateProduct(const P& a, const P& b) {
    return a.y * b.x - a.x * b.y;
}

}  // namespace zel::cuda
