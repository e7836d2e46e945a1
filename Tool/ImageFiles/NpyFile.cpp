#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "ImageFiles/ByteOrder.h"
#include "ImageFiles/FileError.h"
#include "ImageFiles/ImageFormat.h"
#include "ImageFiles/NpyHeader.h"
#include "ImageFiles/Rows.h"

namespace zel::tool {

namespace {

std::string readExactly(InputFile& file, std::size_t count) {
    std::string bytes(count, '\0');
    if (file.read(bytes.data(), count) < count) throw FileError::reading(file.path(), "its NPY header is cut off");
    return bytes;
}

NpyHeader readHeader(InputFile& file) {
    constexpr std::string_view magic = "\x93NUMPY";
    std::string start(magic.size(), '\0');
    start.resize(file.read(start.data(), start.size()));
    if (start != magic) throw FileError::reading(file.path(), "it is not an NPY file");

    const int version = static_cast<unsigned char>(readExactly(file, 2)[0]);
    if (version < 1 || version > 3) {
        throw FileError::reading(file.path(),
                                 "its NPY version is " + std::to_string(version) + "; 1, 2 and 3 can be read");
    }
    std::size_t length = 0;
    const std::string lengthBytes = readExactly(file, version == 1 ? 2 : 4);
    for (std::size_t i = lengthBytes.size(); i-- > 0;)
        length = length << 8U | static_cast<unsigned char>(lengthBytes[i]);
    constexpr std::size_t longestHeader = std::size_t{1} << 20U;
    if (length > longestHeader) throw FileError::reading(file.path(), "its NPY header is damaged");
    return parseNpyHeader(readExactly(file, length), file.path());
}

ImageSize imageSize(const NpyHeader& header) {
    std::array<std::size_t, 5> sizes{1, 1, 1, 1, 1};
    std::copy(header.shape.rbegin(), header.shape.rend(), sizes.begin());
    return {sizes[0], sizes[1], sizes[2], sizes[3], sizes[4]};
}

void readVoxels(InputFile& file, void* voxels, std::size_t bytes) {
    if (file.read(voxels, bytes) < bytes) throw FileError::reading(file.path(), "its end is missing");
}

/// Where runs along the first axis begin in the image, in voxels, in the order in which a file in Fortran order has
/// them.
class FortranRuns {
public:
    explicit FortranRuns(const std::vector<std::size_t>& shape)
        : shape_(shape), index_(shape.size()), stride_(shape.size(), 1) {
        for (std::size_t axis = shape.size(); axis-- > 1;) stride_[axis - 1] = stride_[axis] * shape[axis];
    }

    std::size_t step() const { return stride_[0]; }
    std::size_t next() {
        const std::size_t start = start_;
        for (std::size_t axis = 1; axis < shape_.size(); ++axis) {
            start_ += stride_[axis];
            if (++index_[axis] < shape_[axis]) break;
            start_ -= stride_[axis] * shape_[axis];
            index_[axis] = 0;
        }
        return start;
    }

private:
    const std::vector<std::size_t>& shape_;
    std::vector<std::size_t> index_;
    std::vector<std::size_t> stride_;
    std::size_t start_ = 0;
};

template <std::size_t voxelSize>
void readFortranOrder(InputFile& file, const NpyHeader& header, std::byte* voxels) {
    FortranRuns runs(header.shape);
    const std::size_t runLength = header.shape[0];
    const std::size_t runCount = header.elementCount() / runLength;
    // Several runs at once: their voxels lie side by side in the image, mostly within one cache line.
    constexpr std::size_t bufferBytes = std::size_t{8} << 20U, mostRuns = 64;
    const std::size_t batch =
        std::min(runCount, std::clamp<std::size_t>(bufferBytes / (runLength * voxelSize), 1, mostRuns));
    std::vector<std::byte> buffer(batch * runLength * voxelSize);
    std::array<std::size_t, mostRuns> starts{};

    for (std::size_t first = 0; first < runCount; first += batch) {
        const std::size_t count = std::min(batch, runCount - first);
        readVoxels(file, buffer.data(), count * runLength * voxelSize);
        std::generate_n(starts.begin(), count, [&] { return runs.next(); });
        // In short pieces, since runs of a power of two would drive each other out of the cache.
        constexpr std::size_t pieceLength = 8;
        for (std::size_t begin = 0; begin < runLength; begin += pieceLength) {
            const std::size_t end = std::min(begin + pieceLength, runLength);
            for (std::size_t run = 0; run < count; ++run) {
                for (std::size_t i = begin; i < end; ++i) {
                    std::memcpy(voxels + (starts[run] + i * runs.step()) * voxelSize,
                                buffer.data() + (run * runLength + i) * voxelSize, voxelSize);
                }
            }
        }
    }
}

void readFortranOrder(InputFile& file, const NpyHeader& header, std::byte* voxels) {
    switch (helper::getSizeOf(header.type)) {
        case 1:
            return readFortranOrder<1>(file, header, voxels);
        case 2:
            return readFortranOrder<2>(file, header, voxels);
        case 4:
            return readFortranOrder<4>(file, header, voxels);
        case 8:
            return readFortranOrder<8>(file, header, voxels);
        default:
            return readFortranOrder<16>(file, header, voxels);
    }
}

class NpyFormat final : public ImageFormat {
public:
    std::string_view name() const override { return "NPY"; }
    std::vector<std::string_view> extensions() const override { return {".npy"}; }

    HostImage read(InputFile& file) const override {
        const NpyHeader header = readHeader(file);
        const std::size_t bytes = header.elementCount() * helper::getSizeOf(header.type);
        if (const auto remaining = file.remaining(); remaining && *remaining < bytes) {
            throw FileError::reading(file.path(), "its end is missing: the header promises " + std::to_string(bytes) +
                                                      " bytes of voxels, " + std::to_string(*remaining) + " are there");
        }
        file.requireMemory(bytes);

        HostImage image(header.type, imageSize(header));
        auto* const voxels = static_cast<std::byte*>(image.data());
        if (header.isFortranOrder) {
            readFortranOrder(file, header, voxels);
        } else {
            readVoxels(file, voxels, bytes);
        }
        if (header.isByteSwapped) swapBytes(voxels, bytes, header.type);
        return image;
    }

    std::string whyNotWritable(VoxelTypes /*type*/, const ImageSize& /*size*/) const override { return {}; }

    void write(AtomicFile& file, const ImageModel& image) const override {
        const ImageSize size = imageSizeOf(image);
        const std::string header = makeNpyHeader(image.getDataType(), size);
        file.write(header.data(), header.size());
        writeVoxels(file, image);
    }
};

}  // namespace

const ImageFormat& npyFormat() {
    static const NpyFormat format;
    return format;
}

}  // namespace zel::tool
