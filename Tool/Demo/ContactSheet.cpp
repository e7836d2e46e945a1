#include "Demo/ContactSheet.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "Demo/BitmapFont.h"
#include "ImageFiles/Common/Rows.h"
#include "zel/ImageModelAdapter.h"

namespace zel::tool {

namespace {

constexpr std::size_t panelSide = 256;
constexpr std::size_t margin = 16;
constexpr std::size_t textScale = 2;
constexpr std::size_t captionHeight = characterHeight * textScale + 8;
constexpr std::size_t panelsPerRow = 4;
constexpr unsigned char background = 24;
constexpr unsigned char textBrightness = 230;

/// A slice, as numbers.
struct Slice {
    std::size_t width;
    std::size_t height;
    std::vector<double> values;
};

Slice middleSlice(const ImageModel& image) {
    const ImageSize size = imageSizeOf(image);
    const ImageModelAdapter numbers(&image, VoxelTypes::float64, DataConvertionTypes::cast);
    Slice slice{size.x, size.y, std::vector<double>(size.x * size.y)};
    for (std::size_t y = 0; y < size.y; ++y) {
        readWholeRow(numbers, slice.values.data() + y * size.x, {y, size.z / 2, 0, 0});
    }
    return slice;
}

/// Maps the range of the values to 0 to 255. What is not finite becomes 0.
void stretch(Slice& slice) {
    double low = HUGE_VAL, high = -HUGE_VAL;
    for (const double value : slice.values) {
        if (!std::isfinite(value)) continue;
        low = std::min(low, value);
        high = std::max(high, value);
    }
    const double scale = high > low ? 255 / (high - low) : 0;
    for (double& value : slice.values) value = std::isfinite(value) ? (value - low) * scale : 0;
}

/// Mean of the values that pixel (x, y) of a panel covers; at least one.
double meanUnder(const Slice& slice, double perPixel, std::size_t x, std::size_t y) {
    const auto begin = [=](std::size_t pixel) {
        return static_cast<std::size_t>(static_cast<double>(pixel) * perPixel);
    };
    const std::size_t left = begin(x), right = std::min(std::max(begin(x + 1), left + 1), slice.width);
    const std::size_t top = begin(y), bottom = std::min(std::max(begin(y + 1), top + 1), slice.height);
    double sum = 0;
    for (std::size_t j = top; j < bottom; ++j) {
        for (std::size_t i = left; i < right; ++i) sum += slice.values[j * slice.width + i];
    }
    return sum / static_cast<double>((right - left) * (bottom - top));
}

HostImage makePanel(const Slice& slice) {
    const double perPixel = static_cast<double>(std::max(slice.width, slice.height)) / panelSide;
    const auto pixels = [=](std::size_t length) {
        return std::max<std::size_t>(1, static_cast<std::size_t>(static_cast<double>(length) / perPixel));
    };
    HostImage panel(VoxelTypes::uint8, {pixels(slice.width), pixels(slice.height)});
    auto* pixel = static_cast<unsigned char*>(panel.data());
    for (std::size_t y = 0; y < panel.getDimension(1); ++y) {
        for (std::size_t x = 0; x < panel.getDimension(0); ++x) {
            *pixel++ = static_cast<unsigned char>(std::lround(meanUnder(slice, perPixel, x, y)));
        }
    }
    return panel;
}

void paste(const HostImage& panel, HostImage& sheet, std::size_t left, std::size_t top) {
    for (std::size_t y = 0; y < panel.getDimension(1); ++y) {
        std::memcpy(static_cast<std::byte*>(sheet.data()) + (top + y) * sheet.rowPitchBytes() + left,
                    static_cast<const std::byte*>(panel.data()) + y * panel.rowPitchBytes(), panel.getDimension(0));
    }
}

}  // namespace

void ContactSheet::add(const ImageModel& image, const std::string& caption) {
    Slice slice = middleSlice(image);
    if (image.getDataType() != VoxelTypes::uint8) stretch(slice);
    panels_.push_back({makePanel(slice), caption});
}

HostImage ContactSheet::render() const {
    const std::size_t columns = std::clamp<std::size_t>(panels_.size(), 1, panelsPerRow);
    const std::size_t rows = (panels_.size() + columns - 1) / columns;
    const std::size_t cellWidth = panelSide + margin, cellHeight = panelSide + captionHeight + margin;
    HostImage sheet(VoxelTypes::uint8, {margin + columns * cellWidth, margin + rows * cellHeight});
    std::memset(sheet.data(), background, sheet.extentBytes());
    for (std::size_t i = 0; i < panels_.size(); ++i) {
        const std::size_t left = margin + i % columns * cellWidth, top = margin + i / columns * cellHeight;
        paste(panels_[i].picture, sheet, left, top);
        const std::size_t fitting = panelSide / (characterWidth * textScale);
        const std::string& caption = panels_[i].caption;
        const std::size_t scale = caption.size() <= fitting ? textScale : 1;
        drawText(sheet, caption.substr(0, panelSide / (characterWidth * scale)), left, top + panelSide + 6, scale,
                 textBrightness);
    }
    return sheet;
}

}  // namespace zel::tool
