#pragma once

#include "FilterRun.h"

namespace zel::test {

/// The same voxels in images of many kinds: rows with gaps, rows only, a part of a part, a part on the device.
template <typename T>
class ImagesOfAllKinds {
public:
    ImagesOfAllKinds(const HostImage& content, const ImageSize& size)
        : size_(size), rows_(HostImage(voxelTypeOf<T>, size)) {
        for (ImageModel* const image : all()) copyRows(content, *image);
    }

    std::array<ImageModel*, 4> all() { return {&withGaps_, &rows_, &part_, &devicePart_}; }

private:
    ImageSize size_;
    std::vector<T> memory_ = std::vector<T>((size_.x + 13) * size_.y * size_.z);
    HostImage withGaps_{voxelTypeOf<T>, size_, memory_.data(), (size_.x + 13) * sizeof(T)};
    RowsOnlyImage rows_;
    HostImage large_{voxelTypeOf<T>, {size_.x + 30, size_.y + 30, size_.z + 5}};
    ImageModelSizeProxy outer_ = partOf(large_, {5, 4, 1}, {size_.x + 20, size_.y + 20, size_.z + 3});
    ImageModelSizeProxy part_ = partOf(outer_, {11, 13, 2}, size_);
    std::unique_ptr<ImageModel> deviceLarge_ = onDevice(large_);
    ImageModelSizeProxy devicePart_ = partOf(*deviceLarge_, {7, 9, 3}, size_);
};

}  // namespace zel::test
