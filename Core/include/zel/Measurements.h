#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "brontal_object_model/Tuple.h"
#include "zel/export.h"

namespace zel {

/// An array of numbers that an algorithm measured; the last index runs fastest.
template <typename T>
class MeasurementArray {
public:
    MeasurementArray() = default;
    virtual ~MeasurementArray() = default;

    /// Gives the array another shape; all elements are 0 then.
    virtual void resize(const brontal_object_model::TupleX& shape) {
        std::size_t count = 1;
        for (std::size_t i = 0; i < shape.size(); ++i) count *= shape[i];
        shape_ = shape;
        values_.assign(count, T{});
    }

    const brontal_object_model::TupleX& shape() const { return shape_; }
    T* data() { return values_.data(); }
    const T* data() const { return values_.data(); }
    const T& at(const brontal_object_model::TupleX& index) const {
        std::size_t position = 0;
        for (std::size_t i = 0; i < shape_.size(); ++i) position = position * shape_[i] + index[i];
        return values_.at(position);
    }

private:
    brontal_object_model::TupleX shape_{0};
    std::vector<T> values_;
};

/// What a cross-correlation found: the unscaled range, and where the maximum is, in pixels.
class ZEL_API CrossCorrelation2dMsr {
public:
    CrossCorrelation2dMsr();
    ~CrossCorrelation2dMsr();

    MeasurementArray<double> minimumCorrelation;
    MeasurementArray<double> maximumCorrelation;
    MeasurementArray<std::uint64_t> bestPositionX;
    MeasurementArray<std::uint64_t> bestPositionY;
};

/// The extrema of an image's intensities. Each array has one element, at (0, 0, 0).
class ZEL_API IntensityExtremaMsr {
public:
    static std::shared_ptr<IntensityExtremaMsr> New();
    ~IntensityExtremaMsr();

    MeasurementArray<double> minimum_tag;
    MeasurementArray<double> maximum_tag;

private:
    IntensityExtremaMsr();
};

}  // namespace zel
