#include "ImageFiles/Tiff/TiffFile.h"

#include <algorithm>
#include <cstdint>

#include "ImageFiles/Tiff/TiffHandle.h"
#include "ImageFiles/Tiff/TiffReader.h"
#include "ImageFiles/Tiff/TiffWriter.h"

namespace zel::tool {

namespace {

class TiffFormat final : public ImageFormat {
public:
    std::string_view name() const override { return "TIFF"; }
    std::vector<std::string_view> extensions() const override { return {".tif", ".tiff"}; }
    bool matches(std::string_view start) const override { return isTiff(start); }

    HostImage read(InputFile& file, FileDetails& details) const override { return readTiff(file, details); }

    std::string whyNotWritable(VoxelTypes type, const ImageSize& size) const override {
        // Readers disagree about complex numbers in the other byte order.
        if (isComplex(type)) {
            return "TIFF holds integers and floating-point numbers, the image is " + std::string(voxelTypeName(type)) +
                   "; write .npy";
        }
        constexpr std::size_t maxLength = INT32_MAX, maxPages = 1'000'000;  // what libtiff reads back
        if (std::max(size.x, size.y) > maxLength) return "TIFF holds at most 2147483647 voxels along x and y";
        const std::size_t pages = size.z * size.i3 * size.i4;
        if (pages > maxPages) return "TIFF holds at most 1000000 slices, the image has " + std::to_string(pages);
        return {};
    }

    void write(AtomicFile& file, const ImageModel& image, const FileDetails& details,
               const Progress& progress) const override {
        writeTiff(file, image, details, progress);
    }
};

}  // namespace

const ImageFormat& tiffFormat() {
    static const TiffFormat format;
    return format;
}

}  // namespace zel::tool
