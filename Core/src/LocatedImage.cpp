#include "zel/LocatedImage.h"

#include <cmath>

#include "Helper/raise.h"

namespace zel {

namespace {

constexpr int placedAxes = 3;

}  // namespace

LocatedImage::LocatedImage()
    : orientation_{tarnway::Vector<double, 3>(1, 0, 0), tarnway::Vector<double, 3>(0, 1, 0),
                   tarnway::Vector<double, 3>(0, 0, 1)} {}

LocatedImage::~LocatedImage() = default;

double LocatedImage::getOrigin(const int& axis) const {
    return axis < placedAxes ? origin_[static_cast<std::size_t>(axis)] : 0.0;
}

void LocatedImage::setOrigin(const int& axis, double value) {
    if (!std::isfinite(value)) {
        raise<RuntimeError>("Core/src/LocatedImage", __LINE__, "the origin along axis ", axis, " is ", value,
                            "; it must be a finite number");
    }
    origin_.at(static_cast<std::size_t>(axis)) = value;
}

void LocatedImage::setSpacing(const int& axis, double value) {
    if (!(value > 0) || !std::isfinite(value)) {
        raise<RuntimeError>("Core/src/LocatedImage", __LINE__, "the spacing along axis ", axis, " is ", value,
                            "; it must be a finite number above 0");
    }
    spacing_.at(static_cast<std::size_t>(axis)) = value;
}

double LocatedImage::getSpacing(const int& axis) const {
    return axis < placedAxes ? spacing_[static_cast<std::size_t>(axis)] : 1.0;
}

}  // namespace zel
