#include "VoxelConversion.h"

#include <cstring>
#include <type_traits>

#include "FloatToInteger.h"

namespace zel {

namespace {

template <typename To, typename From>
To convertVoxel(From value) {
    if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        return truncateTo<To>(value);
    } else if constexpr (std::is_arithmetic_v<To>) {
        return static_cast<To>(value);
    } else {
        return static_cast<typename To::value_type>(value);
    }
}

template <typename From, typename To>
void convertRow(const void* source, void* target, std::size_t count) {
    const From* const from = static_cast<const From*>(source);
    To* const to = static_cast<To*>(target);
    for (std::size_t i = 0; i < count; ++i) to[i] = convertVoxel<To>(from[i]);
}

}  // namespace

bool isConvertible(VoxelTypes from, VoxelTypes to) {
    return from == to || !isComplex(from);
}

void convertVoxels(const void* source, VoxelTypes from, void* target, VoxelTypes to, std::size_t count) {
    if (from == to) {
        std::memcpy(target, source, count * helper::getSizeOf(from));
        return;
    }
    visitVoxelType(from, RealTypes{}, [&]<typename From>() {
        visitVoxelType(to, AllTypes{}, [&]<typename To>() { convertRow<From, To>(source, target, count); });
    });
}

}  // namespace zel
