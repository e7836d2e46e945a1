#pragma once

#include <cstdint>

/// Applies a macro to the pixel types, in and out, that a 1D convolution has an instance for.
#define ZEL_FOR_EACH_CONVOLUTION_PAIR(INSTANCE)               \
    ZEL_CONVOLUTION_PAIRS_WITH_FLOAT(INSTANCE, std::uint8_t)  \
    ZEL_CONVOLUTION_PAIRS_WITH_FLOAT(INSTANCE, std::uint16_t) \
    ZEL_CONVOLUTION_PAIRS_WITH_FLOAT(INSTANCE, std::uint32_t) \
    ZEL_CONVOLUTION_PAIRS_WITH_FLOAT(INSTANCE, std::int8_t)   \
    ZEL_CONVOLUTION_PAIRS_WITH_FLOAT(INSTANCE, std::int16_t)  \
    ZEL_CONVOLUTION_PAIRS_WITH_FLOAT(INSTANCE, std::int32_t)  \
    ZEL_CONVOLUTION_PAIRS_WITH_FLOAT(INSTANCE, double)        \
    INSTANCE(float, float)

#define ZEL_CONVOLUTION_PAIRS_WITH_FLOAT(INSTANCE, T) \
    INSTANCE(T, T)                                    \
    INSTANCE(T, float)                                \
    INSTANCE(float, T)
