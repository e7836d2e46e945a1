#pragma once

namespace zel::cuda {

/// How a floating-point pixel becomes an integer.
enum class RoundMode : unsigned {
    NearestEven = 0,  ///< to nearest, ties to even
    HalfUp = 1,       ///< plus 0.5 in the source's precision, then down: 2.5 gives 3, -2.5 gives -2
    TowardZero = 2,
    Up = 3,
    Down = 4,
};

}  // namespace zel::cuda
