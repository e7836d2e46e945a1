#pragma once

#include <memory>

#include "zel/ImageModel.h"

namespace zel {

/// Counted owner of the core's objects that are made with New.
template <typename T>
using RefImpl = std::shared_ptr<T>;

/// Where a temporary image lies.
enum class LocationMode : int {
    hostMemory = 1,
};

/// An image for in-between results; it lives as long as its owners.
class ZEL_API TemporaryImage {
public:
    static RefImpl<TemporaryImage> New(LocationMode mode);
    ~TemporaryImage();

    /// Makes the image anew, all voxels 0. The former one and its model are gone.
    /// @throws RuntimeError when the memory cannot be had.
    void reserve(VoxelTypes type, std::size_t sizeX, std::size_t sizeY, std::size_t sizeZ, std::size_t size3,
                 std::size_t size4);

    /// Null before the first reserve.
    ImageModel* getImageModel() { return image_.get(); }

private:
    TemporaryImage();

    std::unique_ptr<ImageModel> image_;
};

}  // namespace zel
