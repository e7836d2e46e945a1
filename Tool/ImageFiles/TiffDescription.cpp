#include "ImageFiles/TiffDescription.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "ImageFiles/NumberText.h"

namespace zel::tool {

namespace {

constexpr std::string_view key = "spacing=";

/// Nothing but three sizes with commas: other programs have lines with our key and one number.
bool parseSpacing(std::string_view text, std::array<double, 3>& spacing) {
    for (std::size_t axis = 0; axis < spacing.size(); ++axis) {
        const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), spacing[axis]);
        if (status != std::errc() || !std::isfinite(spacing[axis]) || spacing[axis] <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (axis + 1 == spacing.size()) break;
        if (!text.starts_with(',')) return false;
        text.remove_prefix(1);
    }
    return text.empty() || text == "\r";
}

}  // namespace

std::string makeTiffDescription(const ImageModel& image) {
    return std::string(key) + numberToText(image.getSpacing(0)) + "," + numberToText(image.getSpacing(1)) + "," +
           numberToText(image.getSpacing(2)) + "\n";
}

std::array<double, 3> spacingOfTiff(const TiffHandle& handle) {
    const char* description = nullptr;
    TIFFGetField(handle.get(), TIFFTAG_IMAGEDESCRIPTION, &description);
    std::string_view rest = description == nullptr ? "" : description;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        std::array<double, 3> spacing{};
        if (line.starts_with(key) && parseSpacing(line.substr(key.size()), spacing)) return spacing;
    }
    return {1, 1, 1};
}

}  // namespace zel::tool
