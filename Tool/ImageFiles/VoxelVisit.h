#pragma once

#include <complex>
#include <cstdint>

#include "zel/VoxelTypes.h"

namespace zel::tool {

template <typename T>
inline constexpr bool isComplex = false;
template <typename T>
inline constexpr bool isComplex<std::complex<T>> = true;

/// Calls body with a value of the C++ type that stands for the voxel type, and returns what it returns.
template <typename Body>
auto visitVoxelType(VoxelTypes type, const Body& body) {
    switch (type) {
        case VoxelTypes::uint8:
            return body(std::uint8_t{});
        case VoxelTypes::uint16:
            return body(std::uint16_t{});
        case VoxelTypes::uint32:
            return body(std::uint32_t{});
        case VoxelTypes::uint64:
            return body(std::uint64_t{});
        case VoxelTypes::int8:
            return body(std::int8_t{});
        case VoxelTypes::int16:
            return body(std::int16_t{});
        case VoxelTypes::int32:
            return body(std::int32_t{});
        case VoxelTypes::int64:
            return body(std::int64_t{});
        case VoxelTypes::float32:
            return body(float{});
        case VoxelTypes::float64:
            return body(double{});
        case VoxelTypes::complex64:
            return body(std::complex<float>{});
        case VoxelTypes::complex128:
            break;
    }
    return body(std::complex<double>{});
}

}  // namespace zel::tool
