#pragma once

#include <array>
#include <cstddef>

#include "tarnway/Vector.h"
#include "zel/VoxelTypes.h"
#include "zel/export.h"

namespace zel {

/// An image of up to five dimensions: axes 0 x, 1 y, 2 z, and two further ones, 3 and 4. The derived class knows
/// where its voxels lie (host memory, a GPU, somewhere else altogether); every image can be read and written row by row.
/// To bring an image of your own, derive from LocatedImage and implement size, type and rows: back ends work on any
/// image.
class ZEL_API ImageModel {
public:
    using Orientation = std::array<tarnway::Vector<double, 3>, 3>;

    virtual ~ImageModel();

    /// Elements along an axis, 0 to 4.
    virtual std::size_t getDimension(const int& axis) const = 0;
    virtual VoxelTypes getDataType() const = 0;

    /// World position of the first voxel's centre along world axis 0 to 2.
    virtual double getOrigin(const int& axis) const = 0;
    /// Voxel size along an axis, in the image's unit of length.
    virtual void setSpacing(const int& axis, double value) = 0;
    virtual double getSpacing(const int& axis) const = 0;
    /// Directions of the axes x, y and z in the world, each of length 1.
    virtual void getOrientation(Orientation& out) const = 0;

    /// Copies `count` voxels along x from (x, y, z, i3, i4) into `buffer`, in the image's own type. Several threads may
    /// read at once. False when the voxels cannot be had.
    virtual bool readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                         std::size_t i4) const = 0;
    /// The same towards the image. Several threads may write different rows at once.
    virtual bool writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z,
                          std::size_t i3, std::size_t i4) = 0;

    /// Whether the voxels lie in the memory of a GPU.
    virtual bool isDeviceResident() const { return false; }
    /// Address of all voxels in host memory, x fastest and without gaps; null when they do not lie there like that.
    virtual void* hostDataWritable() { return nullptr; }
    virtual const void* hostDataReadOnly() const { return nullptr; }

    virtual void setOrigin(const int& axis, double value) = 0;
    virtual void setOrientation(const Orientation& orientation) = 0;
    /// Value that the image has outside its voxels, for whoever looks there; 0 until told otherwise.
    virtual void setBackgroundValue(double value) = 0;
    virtual double getBackgroundValue() const = 0;

    /// Takes over where another image lies: the spacing and origin of the first `axes` axes and, when these are all
    /// three that have a place in the world, the orientation.
    void enforceSameCharacteristics(const ImageModel* other, const int& axes);
};

}  // namespace zel
