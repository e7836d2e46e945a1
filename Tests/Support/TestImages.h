#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <random>
#include <type_traits>
#include <vector>

#include "zel/HostImage.h"
#include "zel/ImageModelSizeProxy.h"

namespace zel::test {

/// Types as typed tests want them.
template <typename... T, typename... More>
::testing::Types<T..., More...> testedTypes(TypeList<T...>, TypeList<More...> = {});

/// Voxels of an image without gaps.
template <typename T>
T* voxels(HostImage& image) {
    return static_cast<T*>(image.data());
}

template <typename T>
HostImage imageOf(const ImageSize& size, const std::vector<T>& values) {
    HostImage image(voxelTypeOf<T>, size);
    std::copy(values.begin(), values.end(), voxels<T>(image));
    return image;
}

/// An image of its own, filled from the seed: integers over their whole range, floats around 0.
template <typename T>
HostImage randomImage(const ImageSize& size, unsigned seed) {
    HostImage image(voxelTypeOf<T>, size);
    std::mt19937 random(seed);
    const std::size_t count = size.x * size.y * size.z * size.i3 * size.i4;
    for (std::size_t i = 0; i < count; ++i) {
        if constexpr (std::is_floating_point_v<T>) {
            voxels<T>(image)[i] = static_cast<T>(std::normal_distribution<double>(0, 100)(random));
        } else {
            voxels<T>(image)[i] = static_cast<T>(random());
        }
    }
    return image;
}

/// All voxels of any image, x fastest, as its own type; none when a row cannot be read.
template <typename T>
std::vector<T> readAll(const ImageModel& image) {
    const std::size_t width = image.getDimension(0), height = image.getDimension(1), depth = image.getDimension(2);
    const std::size_t slices = depth * image.getDimension(3) * image.getDimension(4);
    std::vector<T> result(width * height * slices);
    for (std::size_t row = 0; row < height * slices; ++row) {
        const std::size_t slice = row / height, volume = slice / depth;
        const std::size_t i3 = volume % image.getDimension(3), i4 = volume / image.getDimension(3);
        T* const target = result.data() + row * width;
        if (!image.readRow(width, target, 0, row % height, slice % depth, i3, i4)) return {};
    }
    return result;
}

/// Writes all voxels of an image into another one of its size and type.
inline void copyRows(const ImageModel& from, ImageModel& to) {
    std::vector<std::byte> row(from.getDimension(0) * helper::getSizeOf(from.getDataType()));
    for (std::size_t z = 0; z < from.getDimension(2); ++z) {
        for (std::size_t y = 0; y < from.getDimension(1); ++y) {
            from.readRow(from.getDimension(0), row.data(), 0, y, z, 0, 0);
            to.writeRow(from.getDimension(0), row.data(), 0, y, z, 0, 0);
        }
    }
}

/// The box of an image that begins at `origin`; read-only where the image is.
template <typename Image>
ImageModelSizeProxy partOf(Image& image, const std::array<std::size_t, 5>& origin, const ImageSize& size) {
    return {&image, origin[0], size.x, origin[1], size.y, origin[2], size.z, origin[3], size.i3, origin[4], size.i4};
}

/// An image that can only be reached row by row, and that may fail at one of its rows.
class RowsOnlyImage : public LocatedImage {
public:
    explicit RowsOnlyImage(HostImage image, std::optional<std::size_t> failingRow = {})
        : image_(std::move(image)), failingRow_(failingRow) {}

    std::size_t getDimension(const int& axis) const override { return image_.getDimension(axis); }
    VoxelTypes getDataType() const override { return image_.getDataType(); }
    bool readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                 std::size_t i4) const override {
        return y != failingRow_ && image_.readRow(count, buffer, x, y, z, i3, i4);
    }
    bool writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                  std::size_t i4) override {
        return y != failingRow_ && image_.writeRow(count, buffer, x, y, z, i3, i4);
    }

private:
    HostImage image_;
    std::optional<std::size_t> failingRow_;
};

}  // namespace zel::test
