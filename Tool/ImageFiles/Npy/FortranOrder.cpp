#include "ImageFiles/Npy/FortranOrder.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zel::tool {

namespace {

/// The lines along the first axis in the order of the file, each as the index of its first voxel in the image.
class FirstAxisLines {
public:
    explicit FirstAxisLines(const std::vector<std::size_t>& shape)
        : shape_(shape), index_(shape.size()), stride_(shape.size(), 1) {
        for (std::size_t axis = shape.size(); axis-- > 1;) stride_[axis - 1] = stride_[axis] * shape[axis];
    }

    /// From voxel to voxel of a line, in the image.
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
void readLines(InputFile& file, const NpyHeader& header, std::byte* voxels) {
    FirstAxisLines lines(header.shape);
    const std::size_t length = header.shape[0];
    const std::size_t lineCount = header.elementCount() / length;
    // Several lines at once: they are neighbours in the image, so that every cache line is written as a whole.
    constexpr std::size_t bufferBytes = std::size_t{8} << 20U, maxBatch = 64;
    const std::size_t batch =
        std::min(lineCount, std::clamp<std::size_t>(bufferBytes / (length * voxelSize), 1, maxBatch));
    std::vector<std::byte> buffer(batch * length * voxelSize);
    std::array<std::size_t, maxBatch> starts{};

    for (std::size_t first = 0; first < lineCount; first += batch) {
        const std::size_t count = std::min(batch, lineCount - first);
        file.readExactly(buffer.data(), count * length * voxelSize);
        std::generate_n(starts.begin(), count, [&] { return lines.next(); });
        // In short pieces, since lines whose stride is a power of two would evict each other from the cache.
        constexpr std::size_t pieceLength = 8;
        for (std::size_t begin = 0; begin < length; begin += pieceLength) {
            const std::size_t end = std::min(begin + pieceLength, length);
            for (std::size_t line = 0; line < count; ++line) {
                for (std::size_t i = begin; i < end; ++i) {
                    std::memcpy(voxels + (starts[line] + i * lines.step()) * voxelSize,
                                buffer.data() + (line * length + i) * voxelSize, voxelSize);
                }
            }
        }
    }
}

}  // namespace

void readFortranOrder(InputFile& file, const NpyHeader& header, std::byte* voxels) {
    visitVoxelType(header.type, AllTypes{}, [&]<typename T>() { readLines<sizeof(T)>(file, header, voxels); });
}

}  // namespace zel::tool
