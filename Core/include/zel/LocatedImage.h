#pragma once

#include "zel/ImageModel.h"

namespace zel {

/// An image that keeps its place in the world itself: origin 0, voxels of size 1 and axes along those of the world,
/// until told otherwise. Only the axes x, y and z have a place; the others answer origin 0 and size 1.
class ZEL_API LocatedImage : public ImageModel {
public:
    LocatedImage();
    ~LocatedImage() override;

    double getOrigin(const int& axis) const override;
    /// @throws RuntimeError unless the value is finite.
    void setOrigin(const int& axis, double value) override;
    /// @throws RuntimeError unless the value is above 0 and finite.
    void setSpacing(const int& axis, double value) override;
    double getSpacing(const int& axis) const override;
    void getOrientation(Orientation& out) const override { out = orientation_; }
    void setOrientation(const Orientation& orientation) override { orientation_ = orientation; }
    void setBackgroundValue(double value) override { background_ = value; }
    double getBackgroundValue() const override { return background_; }

private:
    std::array<double, 3> origin_{0, 0, 0};
    std::array<double, 3> spacing_{1, 1, 1};
    Orientation orientation_;
    double background_ = 0;
};

}  // namespace zel
