#include <memory>

#include "CaseSizes.h"
#include "Comparison.h"
#include "MemoryCopy.h"
#include "TestImages.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::bench {

namespace {

using Voxel = float;
using Device = cuda::DeviceImage<Voxel>;

std::shared_ptr<Device> deviceImage(const ImageSize& size) {
    auto image = std::make_shared<Device>(size.x, size.y, size.z, true);
    cuda::checkCudaStatus(cudaMemsetAsync(image->data(), 1, image->slicePitch() * size.z, nullptr));
    cuda::checkCudaStatus(cudaDeviceSynchronize());
    return image;
}

void upload(const ImageModel& image, Device& device) {
    if (device.depth() == 1) return cuda::copyImageToDevice2d(image, device.data(), device.pitch(), 0, 0, nullptr);
    cuda::copyImageToDevice3d(image, device.data(), device.pitch(), device.slicePitch(), 0, 0, nullptr);
}

void download(const Device& device, ImageModel& image) {
    if (device.depth() == 1) return cuda::copyDeviceToImage2d(device.data(), device.pitch(), image, 0, 0, nullptr);
    cuda::copyDeviceToImage3d(device.data(), device.pitch(), device.slicePitch(), image, 0, 0, nullptr);
}

Comparison againstMemcpy(const ImageSize& size, std::vector<Contender> ours) {
    const double bytes = 2 * voxelCount(size) * sizeof(Voxel);
    return {{memoryCopyPeer(bytes)}, bytes, std::move(ours)};
}

/// @param transfer  called with an image in host memory and one on the device.
template <typename Transfer>
Comparison transferCase(const ImageSize& size, const Transfer& transfer) {
    const auto image = std::make_shared<HostImage>(test::randomImage<Voxel>(size, 1));
    const auto rows = std::make_shared<test::RowsOnlyImage>(test::randomImage<Voxel>(size, 2));
    const auto device = deviceImage(size);
    return againstMemcpy(size, {{"bulk", [=] { transfer(*image, *device); }},  //
                                {"staged rows", [=] { transfer(*rows, *device); }}});
}

Comparison deviceCopyCase(const ImageSize& size) {
    const auto source = deviceImage(size);
    const auto target = deviceImage(size);
    const auto copy = [=] {
        cuda::copyDeviceVolume<Voxel>(source->data(), source->pitch(), source->slicePitch(), target->data(),
                                      target->pitch(), target->slicePitch(), size.x, size.y, size.z, nullptr);
        cuda::checkCudaStatus(cudaDeviceSynchronize());
    };
    return againstMemcpy(size, {{"copyDeviceVolume", copy}});
}

}  // namespace

void addTransferCases(Comparisons& comparisons) {
    for (const ImageSize& size : memorySizes) {
        comparisons.add("upload " + sizeText(size), [=] {
            return transferCase(size, [](ImageModel& image, Device& device) { upload(image, device); });
        });
        comparisons.add("download " + sizeText(size), [=] {
            return transferCase(size, [](ImageModel& image, Device& device) { download(device, image); });
        });
        comparisons.add("device copy " + sizeText(size), [=] { return deviceCopyCase(size); });
    }
}

}  // namespace zel::bench
