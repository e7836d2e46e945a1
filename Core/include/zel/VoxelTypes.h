#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "zel/export.h"

namespace zel {

/// What one voxel is made of. The values are part of the interface to the back ends.
enum class VoxelTypes : int {
    uint8 = 0,
    uint16 = 1,
    uint32 = 2,
    uint64 = 3,
    int8 = 4,
    int16 = 5,
    int32 = 6,
    int64 = 7,
    float32 = 8,
    float64 = 9,
    complex64 = 10,   ///< two float32: real part, imaginary part
    complex128 = 11,  ///< two float64: real part, imaginary part
};

/// All types, in the order of their codes.
inline constexpr VoxelTypes allVoxelTypes[] = {
    VoxelTypes::uint8,   VoxelTypes::uint16,  VoxelTypes::uint32,    VoxelTypes::uint64,
    VoxelTypes::int8,    VoxelTypes::int16,   VoxelTypes::int32,     VoxelTypes::int64,
    VoxelTypes::float32, VoxelTypes::float64, VoxelTypes::complex64, VoxelTypes::complex128,
};

/// The name that NumPy gives the type: "uint8", "float32" and so on.
ZEL_API std::string_view voxelTypeName(VoxelTypes type);

/// The type of that name; nothing when there is none.
ZEL_API std::optional<VoxelTypes> voxelTypeFromName(std::string_view name);

namespace helper {

/// Bytes of one voxel. @throws UnexpectedError for a value outside the enumeration.
ZEL_API std::size_t getSizeOf(VoxelTypes type);

}  // namespace helper
}  // namespace zel
