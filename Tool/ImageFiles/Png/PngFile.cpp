#include "ImageFiles/Png/PngFile.h"

#include <algorithm>
#include <cstdint>

#include "ImageFiles/Png/PngReader.h"
#include "ImageFiles/Png/PngWriter.h"

namespace zel::tool {

namespace {

class PngFormat final : public ImageFormat {
public:
    std::string_view name() const override { return "PNG"; }
    std::vector<std::string_view> extensions() const override { return {".png"}; }

    bool matches(std::string_view start) const override { return start.starts_with("\x89PNG"); }

    HostImage read(InputFile& file, FileDetails& /*details*/) const override { return readPng(file); }

    std::string whyNotWritable(VoxelTypes type, const ImageSize& size) const override {
        if (type != VoxelTypes::uint8 && type != VoxelTypes::uint16) {
            return "PNG holds uint8 and uint16, the image is " + std::string(voxelTypeName(type)) +
                   "; write .npy, or make it fit with zel convert --type uint8";
        }
        if (size.z != 1 || size.i3 != 1 || size.i4 != 1) {
            return "PNG holds one slice, the image has " + std::to_string(size.z * size.i3 * size.i4) + "; write .npy";
        }
        if (std::max(size.x, size.y) > INT32_MAX) return "PNG holds at most 2147483647 voxels along an axis";
        return {};
    }

    void write(AtomicFile& file, const ImageModel& image, const FileDetails& /*details*/,
               const Progress& progress) const override {
        writePng(file, image, progress);
    }
};

}  // namespace

const ImageFormat& pngFormat() {
    static const PngFormat format;
    return format;
}

}  // namespace zel::tool
