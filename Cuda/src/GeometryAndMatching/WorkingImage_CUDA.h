#pragma once

#include <cuda_runtime.h>

#include "ImageFiltering/FftUtilities_CUDA.h"
#include "Kernels/ConvertImage.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"
#include "zel/ImageModelAdapter.h"

namespace zel::cuda {

// A correlation works in float or double, whatever the type and the place of its images.

/// Puts an image of voxels T into device memory in the working type. Returns before a conversion on the device is done.
template <typename T>
void placeImage(const ImageModel& image, FftReal<T>* dst, std::uint64_t dstPitch, cudaStream_t stream) {
    using R = FftReal<T>;
    if (image.isDeviceResident()) {
        std::size_t pitch = 0;
        const auto* const voxels = static_cast<const T*>(deviceDataPointerConst(&image, pitch));
        convertImage(voxels, pitch, 0, dst, dstPitch, 0, image.getDimension(0), image.getDimension(1), 1,
                     RoundMode::HalfUp, stream);
    } else if constexpr (std::is_same_v<T, R>) {
        copyImageToDevice2d(image, dst, dstPitch, 0, 0, stream);
    } else {
        copyImageToDevice2d(ImageModelAdapter(&image, voxelTypeOf<R>, DataConvertionTypes::cast), dst, dstPitch, 0, 0,
                            stream);
    }
}

/// Writes device memory of the working type into an image of float, which may lie on the device. Returns when it is
/// done.
template <typename R>
void storeImage(const R* src, std::uint64_t srcPitch, ImageModel& image, cudaStream_t stream) {
    if (image.isDeviceResident()) {
        std::size_t pitch = 0;
        auto* const voxels = static_cast<float*>(deviceDataPointer(&image, pitch));
        convertImage(src, srcPitch, 0, voxels, pitch, 0, image.getDimension(0), image.getDimension(1), 1,
                     RoundMode::HalfUp, stream);
        checkCudaStatus(cudaDeviceSynchronize());
    } else {
        ImageModelAdapter adapter(&image, voxelTypeOf<R>, DataConvertionTypes::cast);
        copyDeviceToImage2d(src, srcPitch, adapter, 0, 0, stream);
    }
}

}  // namespace zel::cuda
