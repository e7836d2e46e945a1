#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "tarnway/ElementTypes.h"
#include "zel/export.h"

// The table is that of the views. These are the types that the back ends have kernels for, those whose voxels are one
// number, and all.
#define ZEL_FOR_EACH_INTEGER_KERNEL_TYPE(X) TARNWAY_FOR_EACH_INTEGER_OF_32_BITS(X)
#define ZEL_FOR_EACH_KERNEL_TYPE(X)     \
    ZEL_FOR_EACH_INTEGER_KERNEL_TYPE(X) \
    TARNWAY_FOR_EACH_FLOAT(X)
#define ZEL_FOR_EACH_REAL_TYPE(X) \
    ZEL_FOR_EACH_KERNEL_TYPE(X)   \
    TARNWAY_FOR_EACH_INTEGER_OF_64_BITS(X)
#define ZEL_FOR_EACH_VOXEL_TYPE(X) TARNWAY_FOR_EACH_ELEMENT_TYPE(X)

namespace zel {

/// What one voxel is made of.
enum class VoxelTypes : int {
#define ZEL_ENUMERATOR(name, code, type) name = code,
    ZEL_FOR_EACH_VOXEL_TYPE(ZEL_ENUMERATOR)
#undef ZEL_ENUMERATOR
};

/// Some C++ types.
template <typename... T>
struct TypeList {
    static constexpr std::size_t size = sizeof...(T);
};

namespace detail {

/// A list whose every entry comes with a comma before it.
template <typename Ignored, typename... T>
using TypesBehind = TypeList<T...>;

}  // namespace detail

#define ZEL_COMMA_TYPE(name, code, type) , type
using KernelTypes = detail::TypesBehind<void ZEL_FOR_EACH_KERNEL_TYPE(ZEL_COMMA_TYPE)>;
using RealTypes = detail::TypesBehind<void ZEL_FOR_EACH_REAL_TYPE(ZEL_COMMA_TYPE)>;
using AllTypes = detail::TypesBehind<void ZEL_FOR_EACH_VOXEL_TYPE(ZEL_COMMA_TYPE)>;
#undef ZEL_COMMA_TYPE

/// The voxel type that a C++ type stands for.
template <typename T>
inline constexpr VoxelTypes voxelTypeOf = VoxelTypes{-1};
#define ZEL_VOXEL_TYPE_OF(name, code, type) \
    template <>                             \
    inline constexpr VoxelTypes voxelTypeOf<type> = VoxelTypes::name;
ZEL_FOR_EACH_VOXEL_TYPE(ZEL_VOXEL_TYPE_OF)
#undef ZEL_VOXEL_TYPE_OF

/// Calls body.operator()<T>() for the type T of a list that the voxel type stands for.
/// @return false when the list lacks it; nothing is called then.
template <typename... T, typename Body>
bool visitVoxelType(VoxelTypes type, TypeList<T...>, const Body& body) {
    return ((type == voxelTypeOf<T> && (body.template operator()<T>(), true)) || ...);
}

/// Whether a voxel is a pair of numbers, its real and its imaginary part.
inline bool isComplex(VoxelTypes type) {
    return !visitVoxelType(type, RealTypes{}, []<typename T>() {});
}

/// All types, in the order of their codes.
inline constexpr auto allVoxelTypes = [] {
    std::array<VoxelTypes, AllTypes::size> all{};
    for (std::size_t code = 0; code < all.size(); ++code) all[code] = static_cast<VoxelTypes>(code);
    return all;
}();

/// The name that NumPy gives the type: "uint8", "float32" and so on. @throws UnexpectedError for a value that is no
/// type.
ZEL_API std::string_view voxelTypeName(VoxelTypes type);

/// The type of that name; nothing when there is none.
ZEL_API std::optional<VoxelTypes> voxelTypeFromName(std::string_view name);

namespace helper {

/// Bytes of one voxel. @throws UnexpectedError for a value that is no type.
ZEL_API std::size_t getSizeOf(VoxelTypes type);

}  // namespace helper
}  // namespace zel
