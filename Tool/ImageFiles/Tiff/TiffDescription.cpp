#include "ImageFiles/Tiff/TiffDescription.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "ImageFiles/Common/NumberText.h"

namespace zel::tool {

namespace {

constexpr std::string_view key = "spacing=";

std::string_view descriptionOf(const TiffHandle& handle) {
    const char* description = nullptr;
    TIFFGetField(handle.get(), TIFFTAG_IMAGEDESCRIPTION, &description);
    return description == nullptr ? "" : description;
}

/// Cuts the first line off the text.
std::string_view takeLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    return line;
}

/// Three sizes with commas and nothing else: other programs write lines with the same key and one number.
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

bool hasImagesWithoutPages(const TiffHandle& handle, std::size_t pageCount) {
    std::string_view rest = descriptionOf(handle);
    if (rest.starts_with("{\"shape\": ")) return rest.find("\"truncated\": true") != std::string_view::npos;
    if (!rest.starts_with("ImageJ=")) return false;
    constexpr std::string_view countKey = "images=";
    while (!rest.empty()) {
        const std::string_view line = takeLine(rest);
        if (!line.starts_with(countKey)) continue;
        std::size_t count = 0;
        std::from_chars(line.data() + countKey.size(), line.data() + line.size(), count);
        return count > pageCount;
    }
    return false;
}

std::array<double, 3> spacingOfTiff(const TiffHandle& handle) {
    std::string_view rest = descriptionOf(handle);
    while (!rest.empty()) {
        const std::string_view line = takeLine(rest);
        std::array<double, 3> spacing{};
        if (line.starts_with(key) && parseSpacing(line.substr(key.size()), spacing)) return spacing;
    }
    return {1, 1, 1};
}

}  // namespace zel::tool
