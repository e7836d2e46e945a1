#pragma once

#include <cuda_runtime.h>

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "FloatToInteger.h"

// The arithmetic of one output of the 1D convolutions, for any axis.
namespace zel::cuda {

/// One tap more, in the precision that the pixel asks for; the sum is rounded to float each time.
template <typename TIn>
__device__ __forceinline__ float addTap(TIn pixel, float tap, float sum) {
    if constexpr (std::is_same_v<TIn, double>)
        return static_cast<float>(std::fma(pixel, static_cast<double>(tap), static_cast<double>(sum)));
    else
        return std::fma(static_cast<float>(pixel), tap, sum);
}

template <typename TOut>
__device__ __forceinline__ TOut fromSum(float sum) {
    if constexpr (std::is_integral_v<TOut>)
        return truncateTo<TOut>(sum);
    else
        return static_cast<TOut>(sum);
}

/// Sets out[lane] for each lane of the bundle to the sum of pixelIn(k, lane) times taps[k], in the order of the taps.
template <typename TOut, typename Bundle, typename TTap, typename PixelIn>
__device__ __forceinline__ void convolve(const Bundle& bundle, const TTap* taps, std::uint64_t tapCount,
                                         const PixelIn& pixelIn, TOut* out) {
    auto sum = bundle.fill(TTap{0});
    for (std::uint64_t k = 0; k < tapCount; ++k) {
        const TTap tap = taps[k];
        bundle.each([&](unsigned int lane) { sum[lane] = addTap(pixelIn(k, lane), tap, sum[lane]); });
    }
    bundle.each([&](unsigned int lane) { out[lane] = fromSum<TOut>(sum[lane]); });
}

}  // namespace zel::cuda
