#include "VoxelConversion.h"

#include <array>
#include <complex>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

#include "FloatToInteger.h"

namespace zel {

namespace {

// The types in the order of their codes: the real ones, which convert to all, then the complex ones.
using Types = std::tuple<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t, std::int8_t, std::int16_t,
                         std::int32_t, std::int64_t, float, double, std::complex<float>, std::complex<double>>;
constexpr std::size_t typeCount = std::tuple_size_v<Types>;
constexpr std::size_t realTypeCount = typeCount - 2;

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

using ConvertRow = void (*)(const void*, void*, std::size_t);

template <std::size_t... Pairs>
constexpr auto makeTable(std::index_sequence<Pairs...>) {
    return std::array<ConvertRow, sizeof...(Pairs)>{
        &convertRow<std::tuple_element_t<Pairs / typeCount, Types>, std::tuple_element_t<Pairs % typeCount, Types>>...};
}

constexpr auto table = makeTable(std::make_index_sequence<realTypeCount * typeCount>{});

bool isReal(VoxelTypes type) {
    return static_cast<std::size_t>(type) < realTypeCount;
}

}  // namespace

bool isConvertible(VoxelTypes from, VoxelTypes to) {
    return from == to || isReal(from);
}

void convertVoxels(const void* source, VoxelTypes from, void* target, VoxelTypes to, std::size_t count) {
    if (from == to) {
        std::memcpy(target, source, count * helper::getSizeOf(from));
    } else {
        table[static_cast<std::size_t>(from) * typeCount + static_cast<std::size_t>(to)](source, target, count);
    }
}

}  // namespace zel
