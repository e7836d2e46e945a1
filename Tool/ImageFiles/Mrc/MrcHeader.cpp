#include "ImageFiles/Mrc/MrcHeader.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/NumberText.h"
#include "ImageFiles/Mrc/MrcFields.h"

namespace zel::tool {

using namespace mrc;

namespace {

/// The decimal number that was stored as a float, as a double: 0.1, not 0.10000000149.
double decimalOf(float value) {
    const std::string text = numberToText(value);
    double decimal = value;
    std::from_chars(text.data(), text.data() + text.size(), decimal);
    return decimal;
}

class HeaderParser {
public:
    HeaderParser(std::string_view bytes, const std::string& path)
        : bytes_(bytes), path_(path), isLittle_(findByteOrder()) {}

    MrcHeader parse() const {
        MrcHeader header;
        header.isByteSwapped = isLittle_ != (std::endian::native == std::endian::little);
        parseMode(header);
        parseCounts(header);
        if (!hasValidAxes(isLittle_)) {
            refuse("its axes MAPC, MAPR, MAPS are " + triple(axesField) +
                   "; they have to be 1, 2 and 3 in any order, or all 0");
        }
        const bool hasAxes = integer(axesField) != 0;
        if (!hasAxes) header.notes.emplace_back("its axes MAPC, MAPR, MAPS are 0, taken as 1, 2, 3");
        if (bytes_.substr(magicField, magic.size()) != magic) {
            header.notes.emplace_back("it has MAP and a zero byte in its header, taken as 'MAP '");
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            header.axes[axis] = hasAxes ? static_cast<std::size_t>(integer(axesField + 4 * axis)) - 1 : axis;
            header.spacing[axis] = spacing(axis);
        }
        readPlace(header);
        readLabels(header.details.labels);
        const int extendedBytes = integer(extendedBytesField);
        if (extendedBytes < 0) refuse("its extended header has " + std::to_string(extendedBytes) + " bytes");
        header.details.extendedBytes = static_cast<std::size_t>(extendedBytes);
        return header;
    }

private:
    /// Whether little endian, by the machine stamp. Old files have none; theirs is the order that gives a valid header.
    bool findByteOrder() const {
        if (!isMagic(bytes_.substr(magicField, magic.size()))) {
            refuse(
                "it is not an MRC file, or one from before the format of the year 2000: it has no 'MAP ' in its "
                "header");
        }
        const std::string_view stamp = bytes_.substr(stampField, stampSize);
        if (stamp.starts_with("\x44\x44") || stamp.starts_with("\x44\x41")) return true;
        if (stamp.starts_with("\x11\x11")) return false;
        if (stamp == std::string_view("\0\0\0\0", stampSize)) {
            for (const bool isLittle : {true, false}) {
                if (findMode(integer(modeField, isLittle)) != nullptr && hasValidAxes(isLittle)) return isLittle;
            }
        }
        std::array<char, 16> text{};
        std::snprintf(text.data(), text.size(), "%02x %02x %02x %02x", byteAt(stampField), byteAt(stampField + 1),
                      byteAt(stampField + 2), byteAt(stampField + 3));
        refuse(std::string("its machine stamp is ") + text.data() +
               "; 44 44 (little endian) and 11 11 (big endian) can be read");
    }

    void parseMode(MrcHeader& header) const {
        const int number = integer(modeField);
        const Mode* const mode = findMode(number);
        if (mode == nullptr) {
            refuse("its mode is " + std::to_string(number) +
                   "; 0 (int8), 1 (int16), 2 (float32), 6 (uint16) and 12 (float16) can be read");
        }
        header.type = mode->type == VoxelTypes::int8 && hasUnsignedBytes() ? VoxelTypes::uint8 : mode->type;
        header.isHalfPrecision = mode->isHalfPrecision;
    }

    /// Bytes of mode 0 are signed, but in files that IMOD wrote only where its flag says so: older ones are unsigned.
    bool hasUnsignedBytes() const {
        constexpr int imod = 0x444F4D49;  // the letters "IMOD"
        constexpr unsigned signedFlag = 1;
        return integer(programField) == imod && (static_cast<unsigned>(integer(programFlagsField)) & signedFlag) == 0;
    }

    void parseCounts(MrcHeader& header) const {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const int count = integer(countsField + 4 * axis);
            if (count <= 0) refuse("its size is " + triple(countsField) + "; each has to be above 0");
            header.counts[axis] = static_cast<std::size_t>(count);
        }
    }

    void readPlace(MrcHeader& header) const {
        MrcDetails& details = header.details;
        bool hasCell = true;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            // The start alone is in the order of the file's axes.
            details.start[header.axes[axis]] = integer(startField + 4 * axis);
            details.sampling[axis] = integer(samplingField + 4 * axis);
            details.cell[axis] = number(cellField + 4 * axis);
            details.angles[axis] = number(anglesField + 4 * axis);
            details.origin[axis] = number(originField + 4 * axis);
            hasCell = hasCell && hasValidCell(axis);
        }
        if (!hasCell) details.cell = {};
        // Some programs leave them out.
        if (std::ranges::count(details.angles, 0.0F) == 3) details.angles = MrcDetails().angles;
        details.spaceGroup = integer(spaceGroupField);
        if (details.spaceGroup == MrcDetails::imageStack && header.counts[2] > 1) {
            header.notes.emplace_back("its space group 0 is that of a stack of images, taken as one volume");
        }
    }

    void readLabels(std::vector<std::string>& labels) const {
        const int count = std::clamp<int>(integer(labelCountField), 0, maxLabelCount);
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            std::string_view label = bytes_.substr(labelField + i * labelSize, labelSize);
            label = label.substr(0, label.find('\0'));
            label = label.substr(0, label.find_last_not_of(' ') + 1);
            if (label != plainLabel) labels.emplace_back(label);
        }
    }

    bool hasValidCell(std::size_t axis) const {
        const float cell = number(cellField + 4 * axis);
        return std::isfinite(cell) && cell > 0 && integer(samplingField + 4 * axis) > 0;
    }

    /// 1 where the file does not say.
    double spacing(std::size_t axis) const {
        if (!hasValidCell(axis)) return 1;
        const float cell = number(cellField + 4 * axis);
        const int sampling = integer(samplingField + 4 * axis);
        const double size = decimalOf(static_cast<float>(decimalOf(cell) / sampling));
        return size > 0 ? size : 1;
    }

    static const Mode* findMode(int number) {
        const auto* const found = std::ranges::find(modes, number, &Mode::number);
        return found == std::end(modes) ? nullptr : found;
    }

    bool hasValidAxes(bool isLittle) const {
        std::array<int, 3> axes{};
        for (std::size_t i = 0; i < 3; ++i) axes[i] = integer(axesField + 4 * i, isLittle);
        std::ranges::sort(axes);
        return axes == std::array<int, 3>{1, 2, 3} || axes == std::array<int, 3>{};
    }

    std::string triple(std::size_t field) const {
        return std::to_string(integer(field)) + ", " + std::to_string(integer(field + 4)) + ", " +
               std::to_string(integer(field + 8));
    }

    unsigned byteAt(std::size_t offset) const { return static_cast<unsigned char>(bytes_[offset]); }
    float number(std::size_t field) const { return std::bit_cast<float>(integer(field)); }
    int integer(std::size_t field) const { return integer(field, isLittle_); }
    int integer(std::size_t field, bool isLittle) const {
        unsigned value = 0;
        for (std::size_t i = 0; i < 4; ++i) value = value << 8U | byteAt(field + (isLittle ? 3 - i : i));
        return static_cast<int>(value);
    }

    [[noreturn]] void refuse(const std::string& why) const { throw FileError::reading(path_, why); }

    std::string_view bytes_;
    const std::string& path_;
    bool isLittle_;
};

}  // namespace

ImageSize MrcHeader::imageSize() const {
    std::array<std::size_t, 3> sizes{};
    for (std::size_t i = 0; i < 3; ++i) sizes[axes[i]] = counts[i];
    const auto depth = static_cast<std::size_t>(std::max(details.sampling[2], 0));  // of each volume of a stack
    if (!details.isVolumeStack() || depth == 0 || sizes[2] % depth != 0) return {sizes[0], sizes[1], sizes[2]};
    return {sizes[0], sizes[1], depth, sizes[2] / depth};
}

MrcHeader parseMrcHeader(std::string_view bytes, const std::string& path) {
    return HeaderParser(bytes, path).parse();
}

std::optional<int> mrcModeOf(VoxelTypes type) {
    const auto* const found =
        std::ranges::find_if(modes, [type](const Mode& mode) { return mode.type == type && !mode.isHalfPrecision; });
    return found == std::end(modes) ? std::nullopt : std::optional<int>(found->number);
}

}  // namespace zel::tool
