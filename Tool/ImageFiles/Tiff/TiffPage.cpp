#include "ImageFiles/Tiff/TiffPage.h"

#include <algorithm>
#include <optional>
#include <type_traits>

#include "ImageFiles/Common/FileError.h"

namespace zel::tool {

namespace {

/// Larger tiles are taken for damage.
constexpr std::size_t maxTileBytes = std::size_t{256} << 20U;

/// The tag's value, or the format's default where a file leaves it out; 0 when there is neither.
template <typename T>
T valueOf(const TiffHandle& handle, std::uint32_t tag) {
    T value = 0;
    return TIFFGetFieldDefaulted(handle.get(), tag, &value) == 1 ? value : T{0};
}

std::optional<VoxelTypes> voxelType(unsigned format, unsigned bits) {
    if (format == SAMPLEFORMAT_VOID) format = SAMPLEFORMAT_UINT;
    if (format == SAMPLEFORMAT_UINT && (bits == 1 || bits == 2 || bits == 4)) return VoxelTypes::uint8;
    if (format == SAMPLEFORMAT_IEEEFP && bits == 16) return VoxelTypes::float32;
    for (const VoxelTypes type : allVoxelTypes) {
        if (!isComplex(type) && tiffSampleFormat(type) == format && 8 * helper::getSizeOf(type) == bits) return type;
    }
    return std::nullopt;
}

std::string formatName(unsigned format) {
    switch (format) {
        case SAMPLEFORMAT_UINT:
        case SAMPLEFORMAT_VOID:
            return "unsigned integers";
        case SAMPLEFORMAT_INT:
            return "signed integers";
        case SAMPLEFORMAT_IEEEFP:
            return "floating-point numbers";
        default:
            return "complex numbers";
    }
}

std::string compressionName(std::uint16_t scheme) {
    const TIFFCodec* const codec = TIFFFindCODEC(scheme);
    return codec == nullptr ? "scheme " + std::to_string(scheme) : std::string(codec->name);
}

/// Reads one page's tags, each group with its refusals.
class PageReader {
public:
    PageReader(const TiffHandle& handle, std::size_t index, const std::string& path)
        : handle_(handle), index_(index), path_(path) {}

    TiffPage read() {
        TiffPage page;
        page.width = valueOf<std::uint32_t>(handle_, TIFFTAG_IMAGEWIDTH);
        page.height = valueOf<std::uint32_t>(handle_, TIFFTAG_IMAGELENGTH);
        if (page.width == 0 || page.height == 0) refuse("has no size");
        if (valueOf<std::uint32_t>(handle_, TIFFTAG_IMAGEDEPTH) > 1) {
            refuse("is a volume by itself; a volume can be read with a page for each slice");
        }
        readOrientation(page);
        checkColours();
        readCompression(page);
        readType(page);
        readSegments(page);
        return page;
    }

private:
    void readOrientation(TiffPage& page) const {
        const auto orientation = valueOf<std::uint16_t>(handle_, TIFFTAG_ORIENTATION);
        page.isMirrored = orientation == ORIENTATION_TOPRIGHT || orientation == ORIENTATION_BOTRIGHT;
        page.isUpsideDown = orientation == ORIENTATION_BOTLEFT || orientation == ORIENTATION_BOTRIGHT;
        if (orientation <= ORIENTATION_BOTLEFT) return;
        refuse("has the orientation " + std::to_string(orientation) +
               ", which turns it by a quarter; turn it in a picture program that saves it without orientation");
    }

    void checkColours() const {
        constexpr const char* hint =
            "; only grey pictures can be read, so convert it to grey first, as most picture "
            "programs can";
        std::uint16_t meaning = PHOTOMETRIC_MINISBLACK;
        TIFFGetField(handle_.get(), TIFFTAG_PHOTOMETRIC, &meaning);
        if (meaning == PHOTOMETRIC_PALETTE) refuse(std::string("has a palette") + hint);
        if (meaning == PHOTOMETRIC_MASK) refuse(std::string("is a transparency mask") + hint);
        if (meaning != PHOTOMETRIC_MINISBLACK && meaning != PHOTOMETRIC_MINISWHITE) {
            refuse(std::string("has colours") + hint);
        }
        const auto samples = valueOf<std::uint16_t>(handle_, TIFFTAG_SAMPLESPERPIXEL);
        if (samples != 1) refuse("has " + std::to_string(samples) + " samples a pixel" + hint);
    }

    void readCompression(TiffPage& page) const {
        const auto scheme = valueOf<std::uint16_t>(handle_, TIFFTAG_COMPRESSION);
        page.isCompressed = scheme != COMPRESSION_NONE;
        if (TIFFIsCODECConfigured(scheme) == 1) return;
        refuse("is compressed with " + compressionName(scheme) +
               ", which cannot be read here; save it without compression");
    }

    void readType(TiffPage& page) const {
        const unsigned format = valueOf<std::uint16_t>(handle_, TIFFTAG_SAMPLEFORMAT);
        const unsigned bits = valueOf<std::uint16_t>(handle_, TIFFTAG_BITSPERSAMPLE);
        const auto type = voxelType(format, bits);
        if (!type) {
            refuse("has " + formatName(format) + " of " + std::to_string(bits) +
                   " bits; integers of 8, 16, 32 and 64 bits, unsigned ones of 1, 2 and 4, and floating-point numbers "
                   "of 16, 32 and 64 can be read");
        }
        page.type = *type;
        page.bitsPerVoxel = bits;

        // A white 0 makes the highest value black, which is defined for unsigned integers only.
        page.isWhiteZero = valueOf<std::uint16_t>(handle_, TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_MINISWHITE;
        if (page.isWhiteZero && format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID) {
            refuse("has a white 0 among " + formatName(format) + "; that can be read for unsigned integers only");
        }
    }

    void readSegments(TiffPage& page) const {
        page.isTiled = TIFFIsTiled(handle_.get()) != 0;
        if (!page.isTiled) {
            page.segmentWidth = page.width;
            page.segmentHeight =
                std::min<std::size_t>(valueOf<std::uint32_t>(handle_, TIFFTAG_ROWSPERSTRIP), page.height);
            if (page.segmentHeight == 0) refuse("has strips without rows");
            return;
        }
        page.segmentWidth = valueOf<std::uint32_t>(handle_, TIFFTAG_TILEWIDTH);
        page.segmentHeight = valueOf<std::uint32_t>(handle_, TIFFTAG_TILELENGTH);
        const std::string tiles = "has tiles of " + std::to_string(page.segmentWidth) + " x " +
                                  std::to_string(page.segmentHeight) + " voxels";
        if (page.segmentWidth == 0 || page.segmentHeight == 0) refuse(tiles);
        if (page.segmentRowBytes() > maxTileBytes / page.segmentHeight) refuse(tiles + "; at most 256 MiB can be read");
    }

    [[noreturn]] void refuse(const std::string& what) const {
        throw FileError::reading(path_, tiffPageName(index_) + " " + what);
    }

    const TiffHandle& handle_;
    std::size_t index_;
    const std::string& path_;
};

}  // namespace

std::uint16_t tiffSampleFormat(VoxelTypes type) {
    std::uint16_t format = SAMPLEFORMAT_COMPLEXIEEEFP;
    visitVoxelType(type, RealTypes{}, [&]<typename T>() {
        format = std::is_floating_point_v<T> ? SAMPLEFORMAT_IEEEFP
                 : std::is_signed_v<T>       ? SAMPLEFORMAT_INT
                                             : SAMPLEFORMAT_UINT;
    });
    return format;
}

std::string tiffPageName(std::size_t index) {
    return "its page " + std::to_string(index + 1);
}

TiffPage readTiffPage(const TiffHandle& handle, std::size_t index, const std::string& path) {
    return PageReader(handle, index, path).read();
}

}  // namespace zel::tool
