#pragma once

#include "zel/ImageModel.h"

namespace zel {

/// How voxels change type. Only one way is in use.
enum class DataConvertionTypes : int {
    cast = 0,  ///< as a C cast does where it is defined; see ImageModelAdapter
};

/// An image seen as another voxel type; rows are converted as they are read and written. Integers to narrower integers
/// keep the low bits. Floating point to integers goes through 32 bits (64 for 64-bit integers): toward zero, saturating
/// there, NaN gives 0, then the low bits are kept. It is never device-resident and has no host data.
class ZEL_API ImageModelAdapter : public ImageModel {
public:
    /// The image has to outlive the adapter.
    /// @throws RuntimeError when one of the two types is complex and the other is not the same.
    ImageModelAdapter(ImageModel* image, VoxelTypes type, DataConvertionTypes conversion);
    /// Only for reading: writeRow answers false.
    ImageModelAdapter(const ImageModel* image, VoxelTypes type, DataConvertionTypes conversion);
    ~ImageModelAdapter() override;

    std::size_t getDimension(const int& axis) const override { return source_->getDimension(axis); }
    VoxelTypes getDataType() const override { return type_; }
    double getOrigin(const int& axis) const override { return source_->getOrigin(axis); }
    void setSpacing(const int& axis, double value) override;
    double getSpacing(const int& axis) const override { return source_->getSpacing(axis); }
    void getOrientation(Orientation& out) const override { source_->getOrientation(out); }
    bool readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                 std::size_t i4) const override;
    bool writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                  std::size_t i4) override;

    /// The image behind the adapter.
    const ImageModel* sourceImage() const { return source_; }

private:
    const ImageModel* source_;
    ImageModel* writable_;  // null for a read-only adapter
    VoxelTypes type_;
};

}  // namespace zel
