#include "ImageFiles/Mrc/MrcHeaderWriter.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

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

void putLabels(std::string& header, std::vector<std::string> labels, const std::string& last) {
    labels.resize(std::min(labels.size(), maxLabelCount - 1));
    labels.push_back(last);
    put(header, labelCountField, static_cast<std::int32_t>(labels.size()));
    for (std::size_t i = 0; i < labels.size(); ++i) {
        labels[i].resize(labelSize, ' ');
        header.replace(labelField + i * labelSize, labelSize, labels[i]);
    }
}

}  // namespace

std::string makeMrcHeader(const ImageModel& image, const MrcStatistics& statistics, const FileDetails& details) {
    std::string header(mrcHeaderSize, '\0');
    MrcDetails place = details.mrc.value_or(
        MrcDetails{.spaceGroup = image.getDimension(2) == 1 ? MrcDetails::imageStack : MrcDetails::volume});
    const std::size_t volumes = image.getDimension(3);
    if (volumes > 1 && !place.isVolumeStack()) place.spaceGroup = MrcDetails::volumeStack;
    for (int axis = 0; axis < 3; ++axis) {
        const auto index = static_cast<std::size_t>(axis);
        const std::size_t offset = 4 * index;
        const auto count = static_cast<std::int32_t>(image.getDimension(axis));
        const bool hasCell = place.cell[index] > 0;
        put(header, countsField + offset, axis == 2 ? count * static_cast<std::int32_t>(volumes) : count);
        put(header, startField + offset, place.start[index]);
        put(header, samplingField + offset, hasCell ? place.sampling[index] : count);
        put(header, cellField + offset, hasCell ? place.cell[index] : cellSize(image, axis));
        put(header, anglesField + offset, place.angles[index]);
        put(header, originField + offset, place.origin[index]);
        put(header, axesField + offset, axis + 1);
    }
    put(header, modeField, mrcModeOf(image.getDataType()).value());
    put(header, minimumField, static_cast<float>(statistics.minimum));
    put(header, maximumField, static_cast<float>(statistics.maximum));
    put(header, meanField, static_cast<float>(statistics.mean));
    put(header, deviationField, static_cast<float>(statistics.deviation));

    put(header, spaceGroupField, place.spaceGroup);
    put(header, versionField, 20140);
    header.replace(magicField, magic.size(), magic);
    const bool isLittle = std::endian::native == std::endian::little;
    header.replace(stampField, stampSize, std::string_view(isLittle ? "\x44\x44\0\0" : "\x11\x11\0\0", stampSize));

    putLabels(header, place.labels, details.done.empty() ? std::string(plainLabel) : details.done);
    return header;
}

}  // namespace zel::tool
