#pragma once

#include <memory>

#include "tarnway/ImageView.h"
#include "zel/LocatedImage.h"

namespace zel {

/// An image that shows a view, as a rule one on the memory of a GPU (tarnway_cuda::CudaImageView). Axes 0, 1, 2 are the
/// view's dimensions x, y, z; axis 3 is its time and axis 4 its channel. A dimension that the view lacks has size 1.
/// Without a view the image is empty.
class ZEL_API TarnwayImage : public LocatedImage {
public:
    explicit TarnwayImage(std::shared_ptr<tarnway::ImageView> view);
    ~TarnwayImage() override;

    std::size_t getDimension(const int& axis) const override;
    VoxelTypes getDataType() const override;
    bool readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                 std::size_t i4) const override;
    bool writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                  std::size_t i4) override;
    bool isDeviceResident() const override;

    /// Bytes from one voxel of the view to the next along an axis; 0 along one that the view lacks, and without a view.
    std::size_t byteStride(const int& axis) const;

    /// May be null.
    std::shared_ptr<tarnway::ImageView> getTarnwayImageView() const { return view_; }

private:
    std::shared_ptr<tarnway::ImageView> view_;
};

}  // namespace zel
