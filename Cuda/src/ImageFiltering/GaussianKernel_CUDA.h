#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <memory>

#include "zel/Kernel3D.h"

namespace zel::cuda {

/// Makes the normalised Gaussian of one axis on the device, as an array of float; returns when it is there.
/// @param standardDeviation  in voxels.
/// @param kernelSizeFactor   half the kernel size per standard deviation.
/// @param tapCount           gets the number of taps, which is odd.
/// @throws RuntimeError when device memory runs out or the copy is refused.
std::shared_ptr<void> uploadGaussianKernel(cudaStream_t stream, double standardDeviation, double kernelSizeFactor,
                                           filtering::linear::KernelDirection3D direction, std::uint64_t& tapCount);

}  // namespace zel::cuda
