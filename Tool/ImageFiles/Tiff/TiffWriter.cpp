#include "ImageFiles/Tiff/TiffWriter.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/Tiff/TiffDescription.h"
#include "ImageFiles/Tiff/TiffHandle.h"
#include "ImageFiles/Tiff/TiffPage.h"

namespace zel::tool {

namespace {

/// Large enough for fast reading, small enough for programs that hold a strip at a time.
constexpr std::size_t stripBytes = std::size_t{256} << 10U;

class TiffWriter {
public:
    TiffWriter(AtomicFile& file, const ImageModel& image)
        : image_(image),
          size_(imageSizeOf(image)),
          rowBytes_(size_.x * helper::getSizeOf(image.getDataType())),
          rowsPerStrip_(std::clamp<std::size_t>(stripBytes / rowBytes_, 1, size_.y)),
          strip_(rowsPerStrip_ * rowBytes_),
          handle_(file, needsBigTiff(image.getDataType(), size_)) {}

    void write() {
        for (std::size_t z = 0; z < size_.z; ++z) {
            describePage(z);
            writeStrips(z);
            check(TIFFWriteDirectory(handle_.get()) == 1);
        }
    }

private:
    void describePage(std::size_t z) {
        set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(size_.x));
        set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(size_.y));
        set(TIFFTAG_BITSPERSAMPLE, 8 * helper::getSizeOf(image_.getDataType()));
        set(TIFFTAG_SAMPLEFORMAT, tiffSampleFormat(image_.getDataType()));
        set(TIFFTAG_SAMPLESPERPIXEL, 1);
        set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rowsPerStrip_));
        if (z == 0) set(TIFFTAG_IMAGEDESCRIPTION, makeTiffDescription(image_).c_str());
    }

    void writeStrips(std::size_t z) {
        std::uint32_t number = 0;
        for (std::size_t first = 0; first < size_.y; first += rowsPerStrip_) {
            const std::size_t rows = std::min(rowsPerStrip_, size_.y - first);
            for (std::size_t row = 0; row < rows; ++row) {
                readWholeRow(image_, strip_.data() + row * rowBytes_, {.y = first + row, .z = z});
            }
            const auto bytes = static_cast<tmsize_t>(rows * rowBytes_);
            check(TIFFWriteEncodedStrip(handle_.get(), number++, strip_.data(), bytes) == bytes);
        }
    }

    template <typename T>
    void set(std::uint32_t tag, T value) {
        check(TIFFSetField(handle_.get(), tag, value) == 1);
    }

    void check(bool hasSucceeded) { handle_.check(hasSucceeded, "it"); }

    const ImageModel& image_;
    ImageSize size_;
    std::size_t rowBytes_;
    std::size_t rowsPerStrip_;
    std::vector<std::byte> strip_;
    TiffHandle handle_;
};

}  // namespace

bool needsBigTiff(VoxelTypes type, const ImageSize& size) {
    // A page's tags, and the offset and length of each of its strips, which have at least one row.
    constexpr std::size_t pageBytes = 512, stripEntryBytes = 16;
    const auto voxelBytes = imageBytes(type, size);
    if (!voxelBytes) return true;
    const std::size_t maxStrips = std::min(size.y, 2 * (*voxelBytes / size.z) / stripBytes + 1);
    return *voxelBytes + size.z * (pageBytes + maxStrips * stripEntryBytes) > UINT32_MAX;
}

void writeTiff(AtomicFile& file, const ImageModel& image) {
    TiffWriter(file, image).write();
}

}  // namespace zel::tool
