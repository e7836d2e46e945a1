#include "ImageFiles/VoxelRounding.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include "ImageFiles/Common/Rows.h"

namespace zel::tool {

namespace {

template <typename T>
inline constexpr bool isComplexNumber = !std::is_arithmetic_v<T>;

template <typename To>
To roundToInteger(double value) {
    using Limits = std::numeric_limits<To>;
    if (std::isnan(value)) return 0;
    const double rounded = std::nearbyint(value);
    // Compared with 2^digits, which a double holds exactly, unlike the largest 64-bit integers.
    if (rounded >= std::ldexp(1.0, Limits::digits)) return Limits::max();
    if (rounded <= static_cast<double>(Limits::lowest())) return Limits::lowest();
    return static_cast<To>(rounded);
}

template <typename To, typename From>
To nearest(From value) {
    if constexpr (isComplexNumber<To> && isComplexNumber<From>) {
        return To(static_cast<typename To::value_type>(value.real()),
                  static_cast<typename To::value_type>(value.imag()));
    } else if constexpr (isComplexNumber<To>) {
        return To(static_cast<typename To::value_type>(value));
    } else if constexpr (std::is_floating_point_v<To>) {
        return static_cast<To>(value);
    } else if constexpr (std::is_floating_point_v<From>) {
        return roundToInteger<To>(value);
    } else {
        if (std::cmp_less(value, std::numeric_limits<To>::lowest())) return std::numeric_limits<To>::lowest();
        if (std::cmp_greater(value, std::numeric_limits<To>::max())) return std::numeric_limits<To>::max();
        return static_cast<To>(value);
    }
}

template <typename From, typename To>
void convertRows(const ImageModel& image, HostImage& result, const Progress& progress) {
    const ImageSize size = imageSizeOf(image);
    std::vector<From> source(size.x);
    std::vector<To> converted(size.x);
    const auto convertRow = [&](const RowIndex& row) {
        readWholeRow(image, source.data(), row);
        for (std::size_t x = 0; x < size.x; ++x) converted[x] = nearest<To>(source[x]);
        writeWholeRow(result, converted.data(), row);
    };
    forEachRow(size, convertRow, progress);
}

}  // namespace

HostImage convertVoxels(const ImageModel& image, VoxelTypes type, const Progress& progress) {
    HostImage result = makeImageLike(image, type);
    visitVoxelType(image.getDataType(), AllTypes{}, [&]<typename From>() {
        visitVoxelType(type, AllTypes{}, [&]<typename To>() {
            if constexpr (isComplexNumber<From> && !isComplexNumber<To>) {
                throw std::runtime_error("complex numbers do not convert to " + std::string(voxelTypeName(type)));
            } else {
                convertRows<From, To>(image, result, progress);
            }
        });
    });
    return result;
}

}  // namespace zel::tool
