#include "DeviceCopy_CUDA.h"

#include <algorithm>
#include <cstdint>

#include "StatusChecks_CUDA.h"
#include "zel/VoxelTypes.h"

namespace zel::cuda {

namespace {

cudaPitchedPtr pitchedPointer(const void* address, std::size_t pitch, std::size_t slicePitch, std::size_t width,
                              std::size_t height) {
    // A slice may hold more rows than are copied of it.
    return make_cudaPitchedPtr(const_cast<void*>(address), pitch, width, std::max(height, slicePitch / pitch));
}

}  // namespace

template <typename T>
void copyDeviceVolume(const T* src, std::size_t srcPitch, std::size_t srcSlicePitch, T* dst, std::size_t dstPitch,
                      std::size_t dstSlicePitch, std::size_t width, std::size_t height, std::size_t depth,
                      cudaStream_t stream) {
    const std::size_t rowBytes = width * sizeof(T);
    if (depth == 1) {
        checkCudaStatus(
            cudaMemcpy2DAsync(dst, dstPitch, src, srcPitch, rowBytes, height, cudaMemcpyDeviceToDevice, stream));
        return;
    }
    cudaMemcpy3DParms copy{};
    copy.srcPtr = pitchedPointer(src, srcPitch, srcSlicePitch, width, height);
    copy.dstPtr = pitchedPointer(dst, dstPitch, dstSlicePitch, width, height);
    copy.extent = make_cudaExtent(rowBytes, height, depth);
    copy.kind = cudaMemcpyDeviceToDevice;
    checkCudaStatus(cudaMemcpy3DAsync(&copy, stream));
}

// One instance of each type that has images on the device.
#define INSTANCE(NAME, CODE, T)                                                                                   \
    template void copyDeviceVolume(const T*, std::size_t, std::size_t, T*, std::size_t, std::size_t, std::size_t, \
                                   std::size_t, std::size_t, cudaStream_t);
ZEL_FOR_EACH_KERNEL_TYPE(INSTANCE)
INSTANCE(complex64, 10, float2)
#undef INSTANCE

}  // namespace zel::cuda
