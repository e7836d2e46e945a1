#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>

#include "tarnway/export.h"

// The table of what one element of an image can be: X(name, code, C++ type) each. Names are NumPy's; codes are part of
// the interface to the back ends and run from 0 on without a gap.

#define TARNWAY_FOR_EACH_INTEGER_OF_32_BITS(X) \
    X(uint8, 0, std::uint8_t)                  \
    X(uint16, 1, std::uint16_t)                \
    X(uint32, 2, std::uint32_t)                \
    X(int8, 4, std::int8_t)                    \
    X(int16, 5, std::int16_t)                  \
    X(int32, 6, std::int32_t)
#define TARNWAY_FOR_EACH_INTEGER_OF_64_BITS(X) \
    X(uint64, 3, std::uint64_t)                \
    X(int64, 7, std::int64_t)
#define TARNWAY_FOR_EACH_FLOAT(X) \
    X(float32, 8, float)          \
    X(float64, 9, double)
/// Real part, imaginary part.
#define TARNWAY_FOR_EACH_COMPLEX(X)       \
    X(complex64, 10, std::complex<float>) \
    X(complex128, 11, std::complex<double>)

#define TARNWAY_FOR_EACH_ELEMENT_TYPE(X)   \
    TARNWAY_FOR_EACH_INTEGER_OF_32_BITS(X) \
    TARNWAY_FOR_EACH_INTEGER_OF_64_BITS(X) \
    TARNWAY_FOR_EACH_FLOAT(X)              \
    TARNWAY_FOR_EACH_COMPLEX(X)

namespace tarnway {

/// What one element is made of.
enum class ElementType : int {
#define TARNWAY_ENUMERATOR(name, code, type) name = code,
    TARNWAY_FOR_EACH_ELEMENT_TYPE(TARNWAY_ENUMERATOR)
#undef TARNWAY_ENUMERATOR
};

/// Bytes of one element. @throws std::invalid_argument for a value that is no type.
TARNWAY_API std::size_t elementSize(ElementType type);

}  // namespace tarnway
