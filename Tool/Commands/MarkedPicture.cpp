#include "Commands/MarkedPicture.h"

#include <algorithm>
#include <vector>

#include "zel/ImageModelAdapter.h"

namespace zel::tool {

namespace {

/// Sets the pixels of a rectangle's outline, `inset` pixels inside it.
void outline(HostImage& picture, const MatchSpan& alongX, const MatchSpan& alongY, long inset, std::uint8_t value) {
    const auto width = static_cast<long>(picture.getDimension(0)), height = static_cast<long>(picture.getDimension(1));
    const long left = static_cast<long>(alongX.position) - static_cast<long>(alongX.anchor) + inset;
    const long top = static_cast<long>(alongY.position) - static_cast<long>(alongY.anchor) + inset;
    const long right = left + static_cast<long>(alongX.size) - 1 - 2 * inset;
    const long bottom = top + static_cast<long>(alongY.size) - 1 - 2 * inset;
    auto* const pixels = static_cast<std::uint8_t*>(picture.data());
    const auto set = [&](long x, long y) {
        if (x >= 0 && y >= 0 && x < width && y < height) pixels[y * width + x] = value;
    };
    for (long x = left; x <= right; ++x) {
        set(x, top);
        set(x, bottom);
    }
    for (long y = top; y <= bottom; ++y) {
        set(left, y);
        set(right, y);
    }
}

}  // namespace

HostImage markedPicture(const ImageModel& image, const MatchSpan& alongX, const MatchSpan& alongY) {
    const std::size_t width = image.getDimension(0), height = image.getDimension(1);
    std::vector<double> values(width * height);
    const ImageModelAdapter asDouble(&image, VoxelTypes::float64, DataConvertionTypes::cast);
    for (std::size_t y = 0; y < height; ++y) asDouble.readRow(width, values.data() + y * width, 0, y, 0, 0, 0);
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    const double black = *low, scale = *high > black ? 255 / (*high - black) : 0;
    HostImage picture(VoxelTypes::uint8, {width, height});
    std::transform(values.begin(), values.end(), static_cast<std::uint8_t*>(picture.data()),
                   [&](double value) { return static_cast<std::uint8_t>((value - black) * scale + 0.5); });
    // Thick enough to be seen when a large picture is shown at a smaller size.
    const long thickness = std::max(1L, static_cast<long>(std::min(width, height) / 256));
    for (long inset = 2 * thickness - 1; inset >= 0; --inset)
        outline(picture, alongX, alongY, inset, inset < thickness ? 255 : 0);
    return picture;
}

}  // namespace zel::tool
