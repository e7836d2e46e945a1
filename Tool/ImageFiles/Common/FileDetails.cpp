#include "ImageFiles/Common/FileDetails.h"

#include <algorithm>

namespace zel::tool {

namespace {

template <typename Number>
bool isAll(const std::array<Number, 3>& numbers, Number wanted) {
    return std::ranges::count(numbers, wanted) == 3;
}

bool hasVoxelSize(const MrcDetails& mrc) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (mrc.cell[axis] > 0 && mrc.cell[axis] != static_cast<float>(mrc.sampling[axis])) return true;
    }
    return false;
}

/// What another format does not hold.
std::vector<std::string> namesOf(const MrcDetails& mrc, bool holdsVoxelSize) {
    std::vector<std::string> names;
    if (!holdsVoxelSize && hasVoxelSize(mrc)) names.emplace_back("voxel size");
    if (!isAll(mrc.start, 0)) names.emplace_back("NSTART");
    if (!isAll(mrc.origin, 0.0F)) names.emplace_back("ORIGIN");
    if (!isAll(mrc.angles, 90.0F)) names.emplace_back("cell angles");
    constexpr int volume = 1;
    if (mrc.spaceGroup > volume) names.push_back("space group " + std::to_string(mrc.spaceGroup));
    if (const std::size_t count = mrc.labels.size(); count > 0) {
        names.push_back(std::to_string(count) + (count == 1 ? " label" : " labels"));
    }
    return names;
}

}  // namespace

std::string lostDetails(const FileDetails& details, std::string_view formatName) {
    std::vector<std::string> names;
    if (details.mrc) {
        if (formatName != "MRC") names = namesOf(*details.mrc, formatName == "TIFF");
        if (details.mrc->extendedBytes > 0) {
            names.push_back("extended header of " + std::to_string(details.mrc->extendedBytes) + " bytes");
        }
    }
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

}  // namespace zel::tool
