#include "GaussianKernel_CUDA.h"

#include <cmath>
#include <vector>

#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "zel/KernelFactory.h"

namespace zel::cuda {

using filtering::linear::Kernel3D;
using filtering::linear::KernelDirection3D;

std::shared_ptr<void> uploadGaussianKernel(cudaStream_t stream, double standardDeviation, double kernelSizeFactor,
                                           KernelDirection3D direction, std::uint64_t& tapCount) {
    tapCount = static_cast<std::uint64_t>(std::ceil(2 * kernelSizeFactor * standardDeviation));
    if (tapCount % 2 == 0) ++tapCount;
    Kernel3D kernel = filtering::linear::kernel_factory::createGaussian1D(tapCount, standardDeviation, direction);
    kernel.normalize();
    const std::vector<float> taps(kernel.coefficients().begin(), kernel.coefficients().end());

    std::shared_ptr<void> deviceTaps = allocateDeviceMemory(tapCount * sizeof(float));
    checkCudaStatus(
        cudaMemcpyAsync(deviceTaps.get(), taps.data(), tapCount * sizeof(float), cudaMemcpyHostToDevice, stream));
    checkCudaStatus(cudaStreamSynchronize(stream));
    return deviceTaps;
}

}  // namespace zel::cuda
