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

struct Compression {
    std::string_view name;
    std::uint16_t scheme;
};

constexpr Compression compressions[] = {{"deflate", COMPRESSION_ADOBE_DEFLATE}, {"zstd", COMPRESSION_ZSTD}};

class TiffWriter {
public:
    TiffWriter(AtomicFile& file, const ImageModel& image, const FileDetails& details)
        : image_(image),
          details_(details),
          size_(imageSizeOf(image)),
          rowBytes_(size_.x * helper::getSizeOf(image.getDataType())),
          rowsPerStrip_(std::clamp<std::size_t>(stripBytes / rowBytes_, 1, size_.y)),
          strip_(rowsPerStrip_ * rowBytes_),
          handle_(file, needsBigTiff(image.getDataType(), size_)) {}

    void write(const Progress& progress) {
        const std::string order = tiffPageOrder(image_, details_);
        const std::size_t pages = size_.z * size_.i3 * size_.i4;
        for (std::size_t page = 0; page < pages; ++page) {
            describePage();
            if (page == 0) describeFile();
            const auto done = static_cast<double>(page), all = static_cast<double>(pages);
            writeStrips(planeOfPage(page, size_, order), partOf(progress, done / all, (done + 1) / all));
            check(TIFFWriteDirectory(handle_.get()) == 1);
        }
    }

private:
    void describePage() {
        set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(size_.x));
        set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(size_.y));
        set(TIFFTAG_BITSPERSAMPLE, 8 * helper::getSizeOf(image_.getDataType()));
        set(TIFFTAG_SAMPLEFORMAT, tiffSampleFormat(image_.getDataType()));
        set(TIFFTAG_SAMPLESPERPIXEL, 1);
        set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        setCompression();
        set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rowsPerStrip_));
    }

    void setCompression() {
        const auto* const asked = std::ranges::find(compressions, details_.compression, &Compression::name);
        if (asked == std::end(compressions)) return set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        set(TIFFTAG_COMPRESSION, asked->scheme);
        // Differences of neighbours are shorter. There is a predictor for floats too, but few readers know it.
        const bool isInteger = tiffSampleFormat(image_.getDataType()) != SAMPLEFORMAT_IEEEFP;
        if (isInteger) set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    }

    /// The resolution is in voxels a unit, whose name is in ImageJ's description: the tag knows inches and centimetres.
    void describeFile() {
        set(TIFFTAG_IMAGEDESCRIPTION, makeTiffDescription(image_, details_).c_str());
        constexpr double lowest = 1e-6, highest = 1e6;  // what a fraction of 32-bit numbers holds well
        const double x = 1 / image_.getSpacing(0), y = 1 / image_.getSpacing(1);
        if (std::min(x, y) < lowest || std::max(x, y) > highest) return;
        set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_NONE);
        set(TIFFTAG_XRESOLUTION, x);
        set(TIFFTAG_YRESOLUTION, y);
    }

    void writeStrips(RowIndex plane, const Progress& progress) {
        std::uint32_t number = 0;
        for (std::size_t first = 0; first < size_.y; first += rowsPerStrip_) {
            const std::size_t rows = std::min(rowsPerStrip_, size_.y - first);
            for (std::size_t row = 0; row < rows; ++row) {
                plane.y = first + row;
                readWholeRow(image_, strip_.data() + row * rowBytes_, plane);
            }
            const auto bytes = static_cast<tmsize_t>(rows * rowBytes_);
            check(TIFFWriteEncodedStrip(handle_.get(), number++, strip_.data(), bytes) == bytes);
            if (progress) progress(static_cast<double>(first + rows) / static_cast<double>(size_.y));
        }
    }

    template <typename T>
    void set(std::uint32_t tag, T value) {
        check(TIFFSetField(handle_.get(), tag, value) == 1);
    }

    void check(bool hasSucceeded) { handle_.check(hasSucceeded, "it"); }

    const ImageModel& image_;
    const FileDetails& details_;
    ImageSize size_;
    std::size_t rowBytes_;
    std::size_t rowsPerStrip_;
    std::vector<std::byte> strip_;
    TiffHandle handle_;
};

}  // namespace

std::vector<std::string> tiffCompressions() {
    std::vector<std::string> names;
    for (const auto& [name, scheme] : compressions) {
        if (TIFFIsCODECConfigured(scheme) == 1) names.emplace_back(name);
    }
    return names;
}

bool needsBigTiff(VoxelTypes type, const ImageSize& size) {
    // A page's tags, and the offset and length of each of its strips, which have at least one row.
    constexpr std::size_t pageBytes = 512, stripEntryBytes = 16;
    const auto voxelBytes = imageBytes(type, size);
    if (!voxelBytes) return true;
    const std::size_t pages = size.z * size.i3 * size.i4;
    const std::size_t maxStrips = std::min(size.y, 2 * (*voxelBytes / pages) / stripBytes + 1);
    // Noise grows a little when it is compressed.
    const std::size_t growth = *voxelBytes / 256;
    return *voxelBytes + growth + pages * (pageBytes + maxStrips * stripEntryBytes) > UINT32_MAX;
}

void writeTiff(AtomicFile& file, const ImageModel& image, const FileDetails& details, const Progress& progress) {
    TiffWriter(file, image, details).write(progress);
}

}  // namespace zel::tool
