#include "ImageFiles/Tiff/TiffReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/HalfFloat.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/Tiff/TiffDescription.h"
#include "ImageFiles/Tiff/TiffPage.h"
#include "System/Interrupt.h"

namespace zel::tool {

namespace {

std::string typeAndSize(const TiffPage& page) {
    return std::to_string(page.width) + " x " + std::to_string(page.height) + " " +
           std::string(voxelTypeName(page.type));
}

/// Unpacks voxels of less than 8 bits, the first in the high bits, and stretches them to the range of 8 bits.
void expandBits(const std::byte* packed, std::size_t bits, std::byte* voxels, std::size_t count) {
    const unsigned highest = (1U << bits) - 1;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t bit = i * bits;
        const unsigned value = std::to_integer<unsigned>(packed[bit / 8]) >> (8 - bits - bit % 8) & highest;
        voxels[i] = static_cast<std::byte>(value * (255 / highest));
    }
}

void expandHalfFloats(const std::byte* halves, std::byte* voxels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t half = 0;
        std::memcpy(&half, halves + i * sizeof half, sizeof half);
        const float value = floatFromHalf(half);
        std::memcpy(voxels + i * sizeof value, &value, sizeof value);
    }
}

/// Copies part of a row, stored as the page says, into the image.
void placeVoxels(const TiffPage& page, const std::byte* from, std::byte* to, std::size_t count) {
    if (page.isPlain()) {
        std::memcpy(to, from, count * helper::getSizeOf(page.type));
    } else if (page.bitsPerVoxel < 8) {
        expandBits(from, page.bitsPerVoxel, to, count);
    } else {
        expandHalfFloats(from, to, count);
    }
}

class TiffReader {
public:
    explicit TiffReader(InputFile& file) : file_(file), handle_(file), first_(readTiffPage(handle_, 0, file.path())) {}

    /// In two passes over the pages: the first counts them, for the size of the image.
    HostImage read(FileDetails& details) {
        const std::size_t pageCount = countPages();
        handle_.check(TIFFSetDirectory(handle_.get(), 0) == 1, tiffPageName(0));
        const TiffAxes axes = tiffAxesOf(handle_, pageCount, file_.path());
        const ImageSize size{first_.width, first_.height, axes.slices, axes.channels, axes.frames};
        const auto bytes = imageBytes(first_.type, size);
        if (!bytes) throw FileError::reading(file_.path(), "its size is too large");
        file_.requireMemory(*bytes);

        HostImage image(first_.type, size);
        for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, axes.spacing[static_cast<std::size_t>(axis)]);
        const std::string order = axes.details.pageOrder.empty() ? "CZT" : axes.details.pageOrder;
        auto* const voxels = static_cast<std::byte*>(image.data());
        for (std::size_t page = 0; page < pageCount; ++page) {
            if (page > 0) goToNextPage(page);
            const RowIndex plane = planeOfPage(page, size, order);
            const std::size_t slice = (plane.i4 * size.i3 + plane.i3) * size.z + plane.z;
            readVoxels(page, voxels + slice * first_.height * first_.rowBytes());
        }
        details.tiff = axes.details;
        details.unit = axes.unit;
        return image;
    }

private:
    std::size_t countPages() {
        std::size_t count = 1;
        requireLink(0);
        for (; TIFFLastDirectory(handle_.get()) == 0; ++count) {
            goToNextPage(count);
            readLikePage(count);
            requireLink(count);
        }
        return count;
    }

    /// Refuses a file that ends before the link to the next page, which follows the entries of the directory:
    /// libtiff would take the page for the last one.
    void requireLink(std::size_t index) const {
        const bool isBig = TIFFIsBigTIFF(handle_.get()) != 0;
        const std::size_t countBytes = isBig ? 8 : 2, entryBytes = isBig ? 20 : 12, linkBytes = isBig ? 8 : 4;
        const std::uint64_t directory = TIFFCurrentDirOffset(handle_.get());
        std::array<unsigned char, 8> bytes{};
        file_.readAt(bytes.data(), countBytes, directory);
        std::size_t entryCount = 0;
        for (std::size_t i = 0; i < countBytes; ++i) {
            entryCount = entryCount << 8U | bytes[TIFFIsBigEndian(handle_.get()) != 0 ? i : countBytes - 1 - i];
        }
        if (directory + countBytes + entryCount * entryBytes + linkBytes <= file_.size().value_or(0)) return;
        throw FileError::reading(file_.path(), tiffPageName(index) + " is cut off");
    }

    /// @param index  of the page after the current one.
    void goToNextPage(std::size_t index) {
        checkInterrupt();
        handle_.check(TIFFReadDirectory(handle_.get()) == 1, tiffPageName(index), "it is an earlier page once more");
    }

    TiffPage readLikePage(std::size_t index) const {
        const TiffPage page = readTiffPage(handle_, index, file_.path());
        if (page.width == first_.width && page.height == first_.height && page.type == first_.type) return page;
        throw FileError::reading(file_.path(), tiffPageName(index) + " is " + typeAndSize(page) + ", its first " +
                                                   typeAndSize(first_) + "; pages of one size and type can be read");
    }

    void readVoxels(std::size_t index, std::byte* voxels) {
        const TiffPage page = readLikePage(index);
        if (page.isTiled || !page.isPlain()) {
            readSegments(page, index, voxels);
        } else {
            readStrips(page, index, voxels);
        }
        orient(page, voxels);
        if (!page.isWhiteZero) return;
        // The highest value minus the value, which for unsigned integers inverts every byte.
        std::transform(voxels, voxels + page.height * page.rowBytes(), voxels, std::bit_not<>());
    }

    /// Puts the rows and columns of a page in the order in which they are looked at.
    static void orient(const TiffPage& page, std::byte* voxels) {
        const std::size_t rowBytes = page.rowBytes(), size = helper::getSizeOf(page.type);
        for (std::size_t y = 0; page.isUpsideDown && y < page.height / 2; ++y) {
            std::byte* const row = voxels + y * rowBytes;
            std::swap_ranges(row, row + rowBytes, voxels + (page.height - 1 - y) * rowBytes);
        }
        for (std::size_t y = 0; page.isMirrored && y < page.height; ++y) {
            std::byte *left = voxels + y * rowBytes, *right = left + rowBytes - size;
            for (; left < right; left += size, right -= size) std::swap_ranges(left, left + size, right);
        }
    }

    void readStrips(const TiffPage& page, std::size_t index, std::byte* voxels) {
        std::uint32_t strip = 0;
        for (std::size_t y = 0; y < page.height; y += page.segmentHeight) {
            const std::size_t bytes = std::min(page.segmentHeight, page.height - y) * page.rowBytes();
            readSegment(page, index, strip++, voxels + y * page.rowBytes(), bytes);
        }
    }

    void readSegments(const TiffPage& page, std::size_t index, std::byte* voxels) {
        const std::size_t voxelSize = helper::getSizeOf(page.type);
        // Without zeroing it, since a damaged file may give it any size.
        const auto segment = std::make_unique_for_overwrite<std::byte[]>(page.segmentHeight * page.segmentRowBytes());
        std::uint32_t number = 0;
        for (std::size_t y = 0; y < page.height; y += page.segmentHeight) {
            const std::size_t rows = std::min(page.segmentHeight, page.height - y);
            for (std::size_t x = 0; x < page.width; x += page.segmentWidth) {
                const std::size_t columns = std::min(page.segmentWidth, page.width - x);
                readSegment(page, index, number++, segment.get(),
                            (page.isTiled ? page.segmentHeight : rows) * page.segmentRowBytes());
                for (std::size_t row = 0; row < rows; ++row) {
                    const std::byte* const from = segment.get() + row * page.segmentRowBytes();
                    std::byte* const to = voxels + (y + row) * page.rowBytes() + x * voxelSize;
                    placeVoxels(page, from, to, columns);
                }
            }
        }
    }

    /// libtiff reads a segment without an offset from the file's beginning, and completes one that is too short with
    /// the bytes behind it.
    void requireSegment(const TiffPage& page, std::size_t index, std::uint32_t number, std::size_t count) const {
        const std::uint64_t offset = TIFFGetStrileOffset(handle_.get(), number);
        const std::uint64_t bytes = TIFFGetStrileByteCount(handle_.get(), number);
        if (offset > 0 && bytes >= (page.isCompressed ? 1 : count)) return;
        throw FileError::reading(file_.path(), tiffPageName(index) +
                                                   " is damaged: " + (page.isTiled ? "tile " : "strip ") +
                                                   std::to_string(number + 1) + " has " + std::to_string(bytes) +
                                                   " bytes, at byte " + std::to_string(offset) + " of the file");
    }

    /// Decodes one segment completely.
    void readSegment(const TiffPage& page, std::size_t index, std::uint32_t number, void* bytes, std::size_t count) {
        checkInterrupt();
        requireSegment(page, index, number, count);
        const auto wanted = static_cast<tmsize_t>(count);
        const tmsize_t got = page.isTiled ? TIFFReadEncodedTile(handle_.get(), number, bytes, wanted)
                                          : TIFFReadEncodedStrip(handle_.get(), number, bytes, wanted);
        handle_.check(got == wanted && !handle_.hasErrors(), tiffPageName(index));
    }

    InputFile& file_;
    TiffHandle handle_;
    TiffPage first_;
};

}  // namespace

HostImage readTiff(InputFile& file, FileDetails& details) {
    return TiffReader(file).read(details);
}

}  // namespace zel::tool
