#pragma once

#include <cstddef>
#include <string_view>

#include "zel/VoxelTypes.h"

namespace zel::tool::mrc {

/// Where a field of the header begins, in bytes. Each is one or several 32-bit numbers, except the magic, the stamp and
/// the labels, which are text.
enum Field : std::size_t {
    countsField = 0,
    modeField = 12,
    startField = 16,
    samplingField = 28,
    cellField = 40,
    anglesField = 52,
    axesField = 64,
    minimumField = 76,
    maximumField = 80,
    meanField = 84,
    spaceGroupField = 88,
    extendedBytesField = 92,
    versionField = 108,
    programField = 152,
    programFlagsField = 156,
    originField = 196,
    magicField = 208,
    stampField = 212,
    deviationField = 216,
    labelCountField = 220,
    labelField = 224,
};

inline constexpr std::string_view magic = "MAP ";
inline constexpr std::string_view carelessMagic{"MAP\0", 4};  // of programs that write it as a C string
/// Whether these are the bytes of magicField.
inline bool isMagic(std::string_view bytes) {
    return bytes == magic || bytes == carelessMagic;
}
inline constexpr std::size_t stampSize = 4, labelSize = 80, maxLabelCount = 10;

/// The label of an image of which nothing else is known. It is not worth keeping.
inline constexpr std::string_view plainLabel = "Written by zel";

/// How voxels are stored.
struct Mode {
    int number;
    VoxelTypes type;
    bool isHalfPrecision;
};

inline constexpr Mode modes[] = {
    {0, VoxelTypes::int8, false},   {1, VoxelTypes::int16, false},   {2, VoxelTypes::float32, false},
    {6, VoxelTypes::uint16, false}, {12, VoxelTypes::float32, true},
};

}  // namespace zel::tool::mrc
