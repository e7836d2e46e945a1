#include "ImageFiles/Mrc/MrcHeaderWriter.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

#include "ImageFiles/Mrc/MrcFields.h"
#include "ImageFiles/Mrc/MrcHeader.h"

namespace zel::tool {

using namespace mrc;

namespace {

/// The image's length along an axis; 0, which means unknown, when it is beyond a float.
float cellSize(const ImageModel& image, int axis) {
    const double size = image.getSpacing(axis) * static_cast<double>(image.getDimension(axis));
    using Limits = std::numeric_limits<float>;
    return size >= Limits::min() && size <= Limits::max() ? static_cast<float>(size) : 0;
}

/// Puts a 32-bit number into its field, in this machine's byte order.
template <typename T>
void put(std::string& header, std::size_t field, T value) {
    static_assert(sizeof value == 4);
    std::memcpy(header.data() + field, &value, sizeof value);
}

}  // namespace

std::string makeMrcHeader(const ImageModel& image, const MrcStatistics& statistics) {
    std::string header(mrcHeaderSize, '\0');
    for (int axis = 0; axis < 3; ++axis) {
        const std::size_t offset = 4 * static_cast<std::size_t>(axis);
        const auto count = static_cast<std::int32_t>(image.getDimension(axis));
        put(header, countsField + offset, count);
        put(header, samplingField + offset, count);
        put(header, cellField + offset, cellSize(image, axis));
        put(header, anglesField + offset, 90.0F);
        put(header, axesField + offset, axis + 1);
    }
    put(header, modeField, mrcModeOf(image.getDataType()).value());
    put(header, minimumField, static_cast<float>(statistics.minimum));
    put(header, maximumField, static_cast<float>(statistics.maximum));
    put(header, meanField, static_cast<float>(statistics.mean));
    put(header, deviationField, static_cast<float>(statistics.deviation));

    constexpr std::int32_t picture = 0, volume = 1;  // what the format uses space groups for
    put(header, spaceGroupField, image.getDimension(2) == 1 ? picture : volume);
    put(header, versionField, 20140);
    header.replace(magicField, magic.size(), magic);
    const bool isLittle = std::endian::native == std::endian::little;
    header.replace(stampField, stampSize, std::string_view(isLittle ? "\x44\x44\0\0" : "\x11\x11\0\0", stampSize));

    std::string label = "Written by zel";
    label.resize(labelSize, ' ');
    put(header, labelCountField, 1);
    header.replace(labelField, labelSize, label);
    return header;
}

}  // namespace zel::tool
