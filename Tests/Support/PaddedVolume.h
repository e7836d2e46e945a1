#pragma once

#include <numeric>

#include "DeviceVectors.h"
#include "PlainFilters.h"

namespace zel::test {

/// A volume as kernels and copies get it: behind each row comes a padding, behind each slice rows of padding.
template <typename T>
struct PaddedVolume {
    using Size = std::array<std::size_t, 3>;

    PaddedVolume(const Size& volumeSize, std::size_t rowPadding, T value, std::size_t slicePadding = 1)
        : size(volumeSize),
          rowLength(size[0] + rowPadding),
          sliceRows(size[1] + slicePadding),
          elements(rowLength * sliceRows * size[2], value) {}

    /// Each element has a value of its own, padding too.
    static PaddedVolume numbered(const Size& size, std::size_t rowPadding) {
        PaddedVolume volume(size, rowPadding, T{});
        std::iota(volume.elements.begin(), volume.elements.end(), T{});
        return volume;
    }

    std::size_t pitch() const { return rowLength * sizeof(T); }
    std::size_t slicePitch() const { return pitch() * sliceRows; }
    std::size_t indexOf(std::size_t x, std::size_t y, std::size_t z) const {
        return x + rowLength * (y + sliceRows * z);
    }

    /// visit(x, y, z) for each voxel, x fastest, and not for the padding.
    template <typename Visit>
    void forEachPosition(const Visit& visit) const {
        for (std::size_t z = 0; z < size[2]; ++z)
            for (std::size_t y = 0; y < size[1]; ++y)
                for (std::size_t x = 0; x < size[0]; ++x) visit(x, y, z);
    }
    /// visit(element), likewise.
    template <typename Visit>
    void forEachVoxel(const Visit& visit) {
        forEachPosition([&](std::size_t x, std::size_t y, std::size_t z) { visit(elements[indexOf(x, y, z)]); });
    }
    /// All elements after the voxels were overwritten.
    template <typename From>
    std::vector<T> with(const std::vector<From>& voxels) const {
        PaddedVolume changed = *this;
        auto next = voxels.begin();
        changed.forEachVoxel([&](T& element) { element = static_cast<T>(*next++); });
        return changed.elements;
    }
    PlainVolume<T> plain() const {
        PlainVolume<T> result{size, {}};
        PaddedVolume(*this).forEachVoxel([&](const T& element) { result.voxels.push_back(element); });
        return result;
    }

    Size size;
    std::size_t rowLength, sliceRows;
    std::vector<T> elements;
};

}  // namespace zel::test
