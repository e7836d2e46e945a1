#pragma once

#include "zel/Kernel3D.h"

namespace zel::filtering::linear::kernel_factory {

/// A Gaussian along an axis, with 1 at its centre c = (size - 1) / 2: coefficient i is exp(-(i - c)^2 / (2 sigma^2)),
/// not normalised. An even size has no coefficient at the centre. A standard deviation of 0 leaves nothing but the
/// centre.
/// @param standardDeviation  in coefficients.
/// @throws RuntimeError when the size is 0, or the standard deviation is negative or not finite.
ZEL_API Kernel3D createGaussian1D(std::size_t size, double standardDeviation, KernelDirection3D direction);

}  // namespace zel::filtering::linear::kernel_factory
