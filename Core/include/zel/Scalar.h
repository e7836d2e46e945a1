#pragma once

namespace zel {

/// A number that an algorithm takes or gives, whatever the voxel type that it belongs to.
class Scalar {
public:
    Scalar() = default;
    explicit Scalar(double value) : value_(value) {}

    double getRealValue() const { return value_; }

    bool operator==(const Scalar&) const = default;

private:
    double value_ = 0;
};

}  // namespace zel
