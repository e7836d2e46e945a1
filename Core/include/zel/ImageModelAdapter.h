#pragma once

#include "zel/ImageModel.h"

namespace zel {

/// How voxels change type. Only one way is in use.
enum class DataConvertionTypes : int {
    cast = 0,  ///< as a C cast does where it is defined; see ImageModelAdapter
};

/// An image seen as another voxel type; rows are converted as they are read and written. Integers to narrower integers
/// keep the low bits. Floating point to integers goes through 32 bits (64 for 64-bit integers): toward zero, saturating
/// there, NaN gives 0, then the low bits are kept. Real voxels can be read as complex ones, with an imaginary part of
/// 0. It is never device-resident and has no host data.
class ZEL_API ImageModelAdapter : public ImageModel {
public:
    /// The image has to outlive the adapter.
    /// @throws RuntimeError when the image is of a complex type other than `type`.
    ImageModelAdapter(ImageModel* image, VoxelTypes type, DataConvertionTypes conversion);
    /// Only for reading: writeRow answers false, as it does for a real image seen as complex.
    ImageModelAdapter(const ImageModel* image, VoxelTypes type, DataConvertionTypes conversion);
    ~ImageModelAdapter() override;

    std::size_t getDimension(const int& axis) const override { return source_->getDimension(axis); }
    VoxelTypes getDataType() const override { return type_; }
    double getOrigin(const int& axis) const override { return source_->getOrigin(axis); }
    void setSpacing(const int& axis, double value) override { writable().setSpacing(axis, value); }
    double getSpacing(const int& axis) const override { return source_->getSpacing(axis); }
    void getOrientation(Orientation& out) const override { source_->getOrientation(out); }
    bool readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                 std::size_t i4) const override;
    bool writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                  std::size_t i4) override;

    void setOrigin(const int& axis, double value) override { writable().setOrigin(axis, value); }
    void setOrientation(const Orientation& orientation) override { writable().setOrientation(orientation); }
    void setBackgroundValue(double value) override { writable().setBackgroundValue(value); }
    double getBackgroundValue() const override { return source_->getBackgroundValue(); }

    /// The image behind the adapter.
    const ImageModel* sourceImage() const { return source_; }

private:
    ImageModel& writable();

    const ImageModel* source_;
    ImageModel* writable_;  // null for a read-only adapter
    VoxelTypes type_;
};

}  // namespace zel
