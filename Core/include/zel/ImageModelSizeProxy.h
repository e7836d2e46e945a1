#pragma once

#include "zel/ImageModel.h"

namespace zel {

/// What all views of a part of an image have in common.
class ZEL_API ImageModelSizeProxyBase : public ImageModel {
public:
    ~ImageModelSizeProxyBase() override;

    /// Where the part begins in the image that it is a part of, along the five axes.
    virtual void proxyOrigin(std::array<std::size_t, 5>& out) const = 0;
    /// The image that this shows a part of; it may be a proxy too.
    const ImageModel* sourceImage() const { return source_; }

protected:
    explicit ImageModelSizeProxyBase(const ImageModel* source) : source_(source) {}

    const ImageModel* source_;
};

/// A box of an image, as an image. It holds no voxels: the image has to outlive it, and what is written goes there.
class ZEL_API ImageModelSizeProxy : public ImageModelSizeProxyBase {
public:
    /// Origin and size along each axis in turn.
    /// @throws RuntimeError unless the box lies in the image.
    ImageModelSizeProxy(ImageModel* image, std::size_t originX, std::size_t sizeX, std::size_t originY,
                        std::size_t sizeY, std::size_t originZ, std::size_t sizeZ, std::size_t origin3,
                        std::size_t size3, std::size_t origin4, std::size_t size4);
    /// Only for reading: writeRow answers false.
    ImageModelSizeProxy(const ImageModel* image, std::size_t originX, std::size_t sizeX, std::size_t originY,
                        std::size_t sizeY, std::size_t originZ, std::size_t sizeZ, std::size_t origin3,
                        std::size_t size3, std::size_t origin4, std::size_t size4);
    ~ImageModelSizeProxy() override;

    std::size_t getDimension(const int& axis) const override { return size_[static_cast<std::size_t>(axis)]; }
    VoxelTypes getDataType() const override { return source_->getDataType(); }
    double getOrigin(const int& axis) const override;
    void setSpacing(const int& axis, double value) override { writable().setSpacing(axis, value); }
    double getSpacing(const int& axis) const override { return source_->getSpacing(axis); }
    void getOrientation(Orientation& out) const override { source_->getOrientation(out); }
    bool readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                 std::size_t i4) const override;
    bool writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                  std::size_t i4) override;
    bool isDeviceResident() const override { return source_->isDeviceResident(); }
    /// Not null when the box lies without gaps in the image's own host data, as whole rows or whole slices do.
    void* hostDataWritable() override;
    const void* hostDataReadOnly() const override;
    /// Moves the image so that the part begins there.
    void setOrigin(const int& axis, double value) override;
    /// Turns the image about its own origin.
    void setOrientation(const Orientation& orientation) override { writable().setOrientation(orientation); }
    void setBackgroundValue(double value) override { writable().setBackgroundValue(value); }
    double getBackgroundValue() const override { return source_->getBackgroundValue(); }
    void proxyOrigin(std::array<std::size_t, 5>& out) const override { out = origin_; }

private:
    ImageModel& writable();
    bool contains(std::size_t count, std::size_t x, std::size_t y, std::size_t z, std::size_t i3, std::size_t i4) const;
    bool isContiguous() const;
    std::size_t byteOffset() const;

    ImageModel* writable_;  // null for a read-only proxy
    std::array<std::size_t, 5> origin_;
    std::array<std::size_t, 5> size_;
};

}  // namespace zel
