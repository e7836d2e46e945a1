#include "ImageFiles/Common/FileDetails.h"

#include <algorithm>

namespace zel::tool {

namespace {

template <typename Number>
bool isAll(const std::array<Number, 3>& numbers, Number wanted) {
    return std::ranges::count(numbers, wanted) == 3;
}

/// What another format does not hold.
void addNames(const MrcDetails& mrc, std::vector<std::string>& names) {
    if (!isAll(mrc.start, 0)) names.emplace_back("NSTART");
    if (!isAll(mrc.origin, 0.0F)) names.emplace_back("ORIGIN");
    if (!isAll(mrc.angles, 90.0F)) names.emplace_back("cell angles");
    const bool isOfCrystal = mrc.spaceGroup > MrcDetails::volume && mrc.spaceGroup != MrcDetails::volumeStack;
    if (isOfCrystal) names.push_back("space group " + std::to_string(mrc.spaceGroup));
    if (const std::size_t count = mrc.labels.size(); count > 0) {
        names.push_back(std::to_string(count) + (count == 1 ? " label" : " labels"));
    }
}

}  // namespace

std::string lostDetails(const FileDetails& details, std::string_view formatName) {
    std::vector<std::string> names;
    if (details.hasSpacing && formatName != "MRC" && formatName != "TIFF") names.emplace_back("voxel size");
    if (!details.tiff.omeXml.empty() && formatName != "TIFF") names.emplace_back("OME description");
    if (details.tiff.hasImageJTag) names.emplace_back("ImageJ's labels, colour tables and overlays");
    if (details.mrc) {
        if (formatName != "MRC") addNames(*details.mrc, names);
        if (details.mrc->extendedBytes > 0) {
            names.push_back("extended header of " + std::to_string(details.mrc->extendedBytes) + " bytes");
        }
    }
    // MRC counts in angstrom, and the numbers are written as they are.
    if (formatName == "MRC" && !details.unit.empty() && details.unit != "angstrom") {
        names.push_back("unit " + details.unit);
    }
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

}  // namespace zel::tool
