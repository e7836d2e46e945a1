#include "ImageFiles/Mrc/MrcFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ImageFiles/Common/ByteOrder.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/HalfFloat.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/Mrc/MrcFields.h"
#include "ImageFiles/Mrc/MrcHeader.h"
#include "ImageFiles/Mrc/MrcHeaderWriter.h"

namespace zel::tool {

namespace {

MrcHeader readHeader(InputFile& file) {
    std::string bytes(mrcHeaderSize, '\0');
    file.readExactly(bytes.data(), bytes.size(), "its MRC header of 1024 bytes is cut off");
    return parseMrcHeader(bytes, file.path());
}

/// By reading, which works on pipes too.
void skip(InputFile& file, std::size_t count) {
    std::array<char, 4096> buffer{};
    while (count > 0) {
        const std::size_t part = std::min(count, buffer.size());
        file.readExactly(buffer.data(), part);
        count -= part;
    }
}

/// Copies a row of the file into the image, where its voxels are `step` voxels apart.
void placeRow(const std::byte* from, const MrcHeader& header, std::byte* to, std::size_t step) {
    const std::size_t fileSize = header.fileVoxelSize(), size = helper::getSizeOf(header.type);
    for (std::size_t i = 0; i < header.counts[0]; ++i, from += fileSize, to += step * size) {
        if (!header.isHalfPrecision) {
            std::memcpy(to, from, size);
            continue;
        }
        std::uint16_t half = 0;
        std::memcpy(&half, from, sizeof half);
        const float value = floatFromHalf(half);
        std::memcpy(to, &value, sizeof value);
    }
}

void readRows(InputFile& file, const MrcHeader& header, const ImageSize& size, std::byte* voxels) {
    const std::array<std::size_t, 3> steps{1, size.x, size.x * size.y};
    const auto stepOf = [&](std::size_t fileAxis) { return steps[header.axes[fileAxis]]; };
    std::vector<std::byte> row(header.counts[0] * header.fileVoxelSize());
    for (std::size_t section = 0; section < header.counts[2]; ++section) {
        for (std::size_t line = 0; line < header.counts[1]; ++line) {
            file.readExactly(row.data(), row.size());
            if (header.isByteSwapped) {
                swapBytes(row.data(), row.size(), header.isHalfPrecision ? VoxelTypes::uint16 : header.type);
            }
            const std::size_t first = section * stepOf(2) + line * stepOf(1);
            placeRow(row.data(), header, voxels + first * helper::getSizeOf(header.type), stepOf(0));
        }
    }
}

void readVoxels(InputFile& file, const MrcHeader& header, std::byte* voxels) {
    const ImageSize size = header.imageSize();
    if (!header.isPlain()) return readRows(file, header, size, voxels);
    const std::size_t bytes = imageBytes(header.type, size).value();
    file.readExactly(voxels, bytes);
    if (header.isByteSwapped) swapBytes(voxels, bytes, header.type);
}

class MrcFormat final : public ImageFormat {
public:
    std::string_view name() const override { return "MRC"; }
    std::vector<std::string_view> extensions() const override {
        return {".mrc", ".map", ".mrcs", ".st", ".rec", ".ali", ".ccp4"};
    }

    bool matches(std::string_view start) const override {
        return start.size() > mrc::magicField && mrc::isMagic(start.substr(mrc::magicField, mrc::magic.size()));
    }

    HostImage read(InputFile& file, FileDetails& details) const override {
        const MrcHeader header = readHeader(file);
        const ImageSize size = header.imageSize();
        const auto bytes = imageBytes(header.type, size);
        if (!bytes) throw FileError::reading(file.path(), "its size is too large");
        const std::size_t fileBytes = *bytes / helper::getSizeOf(header.type) * header.fileVoxelSize();
        file.requireRemaining(header.details.extendedBytes + fileBytes, "bytes behind it");
        file.requireMemory(*bytes);

        HostImage image(header.type, size);
        for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, header.spacing[static_cast<std::size_t>(axis)]);
        skip(file, header.details.extendedBytes);
        readVoxels(file, header, static_cast<std::byte*>(image.data()));
        details.mrc = header.details;
        if (details.mrc->cell[0] > 0) details.unit = "angstrom";
        details.notes = header.notes;
        return image;
    }

    std::string whyNotWritable(VoxelTypes type, const ImageSize& size) const override {
        if (!mrcModeOf(type)) {
            const std::string fitting = type == VoxelTypes::uint8 ? "int16" : "float32";
            return "MRC holds int8, int16, uint16 and float32, the image is " + std::string(voxelTypeName(type)) +
                   "; write .npy" + (isComplex(type) ? "" : ", or make it fit with zel convert --type " + fitting);
        }
        if (size.i4 != 1) return "MRC holds images of up to four axes; write .npy";
        if (std::max({size.x, size.y, size.z * size.i3}) > INT32_MAX)
            return "MRC holds at most 2147483647 voxels along an axis";
        return {};
    }

    void write(AtomicFile& file, const ImageModel& image, const FileDetails& details,
               const Progress& progress) const override {
        const MrcStatistics statistics = mrcStatisticsOf(image, partOf(progress, 0, 0.5));
        const std::string header = makeMrcHeader(image, statistics, details);
        file.write(header.data(), header.size());
        writeVoxels(file, image, partOf(progress, 0.5, 1));
    }
};

}  // namespace

const ImageFormat& mrcFormat() {
    static const MrcFormat format;
    return format;
}

}  // namespace zel::tool
