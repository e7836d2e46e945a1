#include "zel/VoxelTypes.h"

#include <string>

#include "Helper/raise.h"
#include "zel/Exceptions.h"

namespace zel {

namespace {

struct VoxelTypeEntry {
    std::string_view name;
    std::size_t size;
};

constexpr VoxelTypeEntry table[] = {
    {"uint8", 1}, {"uint16", 2}, {"uint32", 4},  {"uint64", 8},  {"int8", 1},      {"int16", 2},
    {"int32", 4}, {"int64", 8},  {"float32", 4}, {"float64", 8}, {"complex64", 8}, {"complex128", 16},
};

const VoxelTypeEntry& entryOf(VoxelTypes type) {
    const int code = static_cast<int>(type);
    if (code < 0 || code >= static_cast<int>(std::size(table))) {
        raise<UnexpectedError>("Core/src/VoxelTypes", __LINE__, "no voxel type has the code ", code);
    }
    return table[code];
}

}  // namespace

std::string_view voxelTypeName(VoxelTypes type) {
    return entryOf(type).name;
}

std::optional<VoxelTypes> voxelTypeFromName(std::string_view name) {
    for (const VoxelTypes type : allVoxelTypes) {
        if (voxelTypeName(type) == name) return type;
    }
    return std::nullopt;
}

std::size_t helper::getSizeOf(VoxelTypes type) {
    return entryOf(type).size;
}

}  // namespace zel
