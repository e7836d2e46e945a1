#pragma once

#include <memory>

#include "zel/HostImage.h"

namespace zel {

/// Counted owner of the core's objects that are made with New.
template <typename T>
using RefImpl = std::shared_ptr<T>;

/// Where a temporary image lies.
enum class LocationMode : int {
    hostMemory = 1,
};

/// An image whose size is chosen by who fills it: an algorithm of the core that is given one as its output makes it as
/// large as its result. Empty at first.
class ZEL_API ResizableImage : public HostImage {
public:
    ResizableImage();
    ~ResizableImage() override;

    /// Makes the image anew: another type and size, all voxels 0, its place in the world that of a new image. The old
    /// memory goes first.
    /// @throws RuntimeError when the memory cannot be had; the image is then empty.
    void reserve(VoxelTypes type, const ImageSize& size);
};

/// An image for in-between results; it lives as long as its owners.
class ZEL_API TemporaryImage {
public:
    static RefImpl<TemporaryImage> New(LocationMode mode);
    ~TemporaryImage();

    /// ResizableImage::reserve of its image.
    void reserve(VoxelTypes type, std::size_t sizeX, std::size_t sizeY, std::size_t sizeZ, std::size_t size3,
                 std::size_t size4);

    /// The same image for all of the temporary's life; a ResizableImage.
    ImageModel* getImageModel() { return &image_; }

private:
    TemporaryImage();

    ResizableImage image_;
};

}  // namespace zel
