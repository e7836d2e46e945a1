#include "VoxelConversion.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

#include "FloatToInteger.h"

namespace zel {

namespace {

// The real types in the order of their codes.
using RealTypes = std::tuple<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t, std::int8_t, std::int16_t,
                             std::int32_t, std::int64_t, float, double>;
constexpr std::size_t realTypeCount = std::tuple_size_v<RealTypes>;

template <typename From, typename To>
void convertRow(const void* source, void* target, std::size_t count) {
    const From* const from = static_cast<const From*>(source);
    To* const to = static_cast<To*>(target);
    if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        for (std::size_t i = 0; i < count; ++i) to[i] = truncateTo<To>(from[i]);
    } else {
        for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<To>(from[i]);
    }
}

using ConvertRow = void (*)(const void*, void*, std::size_t);

template <std::size_t... Pairs>
constexpr auto makeTable(std::index_sequence<Pairs...>) {
    return std::array<ConvertRow, sizeof...(Pairs)>{
        &convertRow<std::tuple_element_t<Pairs / realTypeCount, RealTypes>,
                    std::tuple_element_t<Pairs % realTypeCount, RealTypes>>...};
}

constexpr auto table = makeTable(std::make_index_sequence<realTypeCount * realTypeCount>{});

bool isReal(VoxelTypes type) {
    return static_cast<std::size_t>(type) < realTypeCount;
}

}  // namespace

bool isConvertible(VoxelTypes from, VoxelTypes to) {
    return from == to || (isReal(from) && isReal(to));
}

void convertVoxels(const void* source, VoxelTypes from, void* target, VoxelTypes to, std::size_t count) {
    if (from == to) {
        std::memcpy(target, source, count * helper::getSizeOf(from));
    } else {
        table[static_cast<std::size_t>(from) * realTypeCount + static_cast<std::size_t>(to)](source, target, count);
    }
}

}  // namespace zel
