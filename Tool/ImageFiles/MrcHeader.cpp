#include "ImageFiles/MrcHeader.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>

#include "ImageFiles/FileError.h"
#include "ImageFiles/NumberText.h"

namespace zel::tool {

namespace {

/// Where a field begins, in bytes. All are numbers of 32 bits but for the last three.
enum Field : std::size_t {
    countsField = 0,
    modeField = 12,
    samplingField = 28,
    cellField = 40,
    anglesField = 52,
    axesField = 64,
    minimumField = 76,
    maximumField = 80,
    meanField = 84,
    spaceGroupField = 88,
    extendedBytesField = 92,
    versionField = 108,
    programField = 152,
    programFlagsField = 156,
    deviationField = 216,
    labelCountField = 220,
    magicField = 208,
    stampField = 212,
    labelField = 224,
};

constexpr std::string_view magic = "MAP ";
constexpr std::size_t magicSize = 4, stampSize = 4, labelSize = 80;

struct Mode {
    int number;
    VoxelTypes type;
    bool isHalfPrecision;
};

constexpr Mode modes[] = {
    {0, VoxelTypes::int8, false},   {1, VoxelTypes::int16, false},   {2, VoxelTypes::float32, false},
    {6, VoxelTypes::uint16, false}, {12, VoxelTypes::float32, true},
};

/// The double that is meant by a number of few digits which a file keeps as a float: 0.1, not 0.10000000149.
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
        if (!hasSoundAxes(isLittle_)) {
            refuse("its axes MAPC, MAPR, MAPS are " + triple(axesField) + "; they have to be 1, 2 and 3 in any order");
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            header.axes[axis] = static_cast<std::size_t>(integer(axesField + 4 * axis)) - 1;
            header.spacing[axis] = spacing(axis);
        }
        const int extendedBytes = integer(extendedBytesField);
        if (extendedBytes < 0) refuse("its extended header has " + std::to_string(extendedBytes) + " bytes");
        header.extendedBytes = static_cast<std::size_t>(extendedBytes);
        return header;
    }

private:
    /// Whether little endian, by the machine stamp. Old files have none; their order is the one that makes sense.
    bool findByteOrder() const {
        if (bytes_.substr(magicField, magicSize) != magic) {
            refuse(
                "it is not an MRC file, or one from before the format of the year 2000: it has no 'MAP ' in its "
                "header");
        }
        const std::string_view stamp = bytes_.substr(stampField, stampSize);
        if (stamp.starts_with("\x44\x44") || stamp.starts_with("\x44\x41")) return true;
        if (stamp.starts_with("\x11\x11")) return false;
        if (stamp == std::string_view("\0\0\0\0", stampSize)) {
            for (const bool isLittle : {true, false}) {
                if (findMode(integer(modeField, isLittle)) != nullptr && hasSoundAxes(isLittle)) return isLittle;
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

    /// Files of IMOD say by a flag that the bytes of mode 0 have a sign, which they had not before the format said so.
    bool hasUnsignedBytes() const {
        constexpr int letters = 0x444F4D49;  // IMOD
        constexpr unsigned areSigned = 1;
        return integer(programField) == letters && (static_cast<unsigned>(integer(programFlagsField)) & areSigned) == 0;
    }

    void parseCounts(MrcHeader& header) const {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const int count = integer(countsField + 4 * axis);
            if (count <= 0) refuse("its size is " + triple(countsField) + "; each has to be above 0");
            header.counts[axis] = static_cast<std::size_t>(count);
        }
    }

    /// 1 where the file does not tell.
    double spacing(std::size_t axis) const {
        const float cell = std::bit_cast<float>(integer(cellField + 4 * axis));
        const int sampling = integer(samplingField + 4 * axis);
        if (!std::isfinite(cell) || cell <= 0 || sampling <= 0) return 1;
        const double size = decimalOf(static_cast<float>(decimalOf(cell) / sampling));
        return size > 0 ? size : 1;
    }

    static const Mode* findMode(int number) {
        const auto* const found = std::ranges::find(modes, number, &Mode::number);
        return found == std::end(modes) ? nullptr : found;
    }

    bool hasSoundAxes(bool isLittle) const {
        std::array<int, 3> axes{};
        for (std::size_t i = 0; i < 3; ++i) axes[i] = integer(axesField + 4 * i, isLittle);
        std::ranges::sort(axes);
        return axes == std::array<int, 3>{1, 2, 3};
    }

    std::string triple(std::size_t field) const {
        return std::to_string(integer(field)) + ", " + std::to_string(integer(field + 4)) + ", " +
               std::to_string(integer(field + 8));
    }

    unsigned byteAt(std::size_t place) const { return static_cast<unsigned char>(bytes_[place]); }
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

/// How long the image is along an axis; 0, which means not known, when MRC's numbers cannot hold it.
float cellSize(const ImageModel& image, int axis) {
    const double size = image.getSpacing(axis) * static_cast<double>(image.getDimension(axis));
    using Limits = std::numeric_limits<float>;
    return size >= Limits::min() && size <= Limits::max() ? static_cast<float>(size) : 0;
}

/// Puts a number of 32 bits into its field, in this machine's byte order.
template <typename T>
void put(std::string& header, std::size_t field, T value) {
    static_assert(sizeof value == 4);
    std::memcpy(header.data() + field, &value, sizeof value);
}

}  // namespace

ImageSize MrcHeader::imageSize() const {
    std::array<std::size_t, 3> sizes{};
    for (std::size_t i = 0; i < 3; ++i) sizes[axes[i]] = counts[i];
    return {sizes[0], sizes[1], sizes[2]};
}

MrcHeader parseMrcHeader(std::string_view bytes, const std::string& path) {
    return HeaderParser(bytes, path).parse();
}

std::optional<int> mrcModeOf(VoxelTypes type) {
    const auto* const found =
        std::ranges::find_if(modes, [type](const Mode& mode) { return mode.type == type && !mode.isHalfPrecision; });
    return found == std::end(modes) ? std::nullopt : std::optional<int>(found->number);
}

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

    constexpr std::int32_t picture = 0, volume = 1;  // what the format takes space groups for
    put(header, spaceGroupField, image.getDimension(2) == 1 ? picture : volume);
    put(header, versionField, 20140);
    header.replace(magicField, magicSize, magic);
    const bool isLittle = std::endian::native == std::endian::little;
    header.replace(stampField, stampSize, std::string_view(isLittle ? "\x44\x44\0\0" : "\x11\x11\0\0", stampSize));

    std::string label = "Written by zel";
    label.resize(labelSize, ' ');
    put(header, labelCountField, 1);
    header.replace(labelField, labelSize, label);
    return header;
}

}  // namespace zel::tool
