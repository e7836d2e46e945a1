#include "zel/VoxelTypes.h"

#include "Helper/raise.h"
#include "zel/Exceptions.h"

namespace zel {

namespace {

struct VoxelTypeEntry {
    std::string_view name;
    std::size_t size = 0;
};

constexpr auto entries = [] {
    std::array<VoxelTypeEntry, AllTypes::size> byCode{};
#define ZEL_ENTRY(name, code, type) byCode[code] = {#name, sizeof(type)};
    ZEL_FOR_EACH_VOXEL_TYPE(ZEL_ENTRY)
#undef ZEL_ENTRY
    return byCode;
}();

const VoxelTypeEntry& entryOf(VoxelTypes type) {
    const int code = static_cast<int>(type);
    if (code < 0 || code >= static_cast<int>(entries.size())) {
        raise<UnexpectedError>("Core/src/VoxelTypes", __LINE__, "no voxel type has the code ", code);
    }
    return entries[static_cast<std::size_t>(code)];
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
