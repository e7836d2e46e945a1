#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "zel/export.h"

namespace zel::filtering::linear {

/// The axis that a one-dimensional kernel lies along.
enum class KernelDirection3D { x = 0, y = 1, z = 2 };

/// Coefficients of a linear filter in three dimensions.
class ZEL_API Kernel3D {
public:
    /// A one-dimensional kernel along an axis.
    Kernel3D(std::vector<double> coefficients, KernelDirection3D direction);

    /// Coefficients along an axis, 0 to 2.
    std::size_t size(int axis) const { return sizes_[static_cast<std::size_t>(axis)]; }
    /// All of them as one array, x fastest.
    const std::vector<double>& coefficients() const { return coefficients_; }

    /// Divides all coefficients by their sum, so that a flat image keeps its value.
    /// @throws RuntimeError when the sum is 0 or not finite.
    void normalize();

private:
    std::array<std::size_t, 3> sizes_{1, 1, 1};
    std::vector<double> coefficients_;
};

}  // namespace zel::filtering::linear
