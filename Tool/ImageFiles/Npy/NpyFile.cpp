#include "ImageFiles/Npy/NpyFile.h"

#include "ImageFiles/Common/ByteOrder.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/Npy/FortranOrder.h"
#include "ImageFiles/Npy/NpyHeader.h"

namespace zel::tool {

namespace {

constexpr std::string_view magic = "\x93NUMPY";

std::string readHeaderBytes(InputFile& file, std::size_t count) {
    std::string bytes(count, '\0');
    file.readExactly(bytes.data(), count, "its NPY header is cut off");
    return bytes;
}

NpyHeader readHeader(InputFile& file) {
    std::string start(magic.size(), '\0');
    start.resize(file.read(start.data(), start.size()));
    if (start != magic) throw FileError::reading(file.path(), "it is not an NPY file");

    const int version = static_cast<unsigned char>(readHeaderBytes(file, 2)[0]);
    if (version < 1 || version > 3) {
        throw FileError::reading(file.path(),
                                 "its NPY version is " + std::to_string(version) + "; 1, 2 and 3 can be read");
    }
    std::size_t length = 0;
    const std::string lengthBytes = readHeaderBytes(file, version == 1 ? 2 : 4);
    for (std::size_t i = lengthBytes.size(); i-- > 0;) {
        length = length << 8U | static_cast<unsigned char>(lengthBytes[i]);
    }
    constexpr std::size_t maxLength = std::size_t{1} << 20U;
    if (length > maxLength) throw FileError::reading(file.path(), "its NPY header is damaged");
    return parseNpyHeader(readHeaderBytes(file, length), file.path());
}

class NpyFormat final : public ImageFormat {
public:
    std::string_view name() const override { return "NPY"; }
    std::vector<std::string_view> extensions() const override { return {".npy"}; }
    bool matches(std::string_view start) const override { return start.starts_with(magic); }

    HostImage read(InputFile& file, FileDetails& details) const override {
        const NpyHeader header = readHeader(file);
        const std::size_t bytes = header.elementCount() * helper::getSizeOf(header.type);
        file.requireRemaining(bytes, "bytes of voxels");
        file.requireMemory(bytes);

        HostImage image(header.type, header.imageSize());
        auto* const voxels = static_cast<std::byte*>(image.data());
        if (header.isFortranOrder) {
            readFortranOrder(file, header, voxels);
        } else {
            file.readExactly(voxels, bytes);
        }
        if (header.isByteSwapped) swapBytes(voxels, bytes, header.type);
        details.npyAxisCount = header.shape.size();
        return image;
    }

    std::string whyNotWritable(VoxelTypes /*type*/, const ImageSize& /*size*/) const override { return {}; }

    void write(AtomicFile& file, const ImageModel& image, const FileDetails& details,
               const Progress& progress) const override {
        const std::string header = makeNpyHeader(image.getDataType(), imageSizeOf(image), details.npyAxisCount);
        file.write(header.data(), header.size());
        writeVoxels(file, image, progress);
    }
};

}  // namespace

const ImageFormat& npyFormat() {
    static const NpyFormat format;
    return format;
}

}  // namespace zel::tool
