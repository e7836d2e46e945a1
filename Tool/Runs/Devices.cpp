#include "Runs/Devices.h"

#include <cuda_runtime.h>

#include <new>
#include <stdexcept>

#include "BuildName.h"
#include "ImageFiles/Common/Rows.h"
#include "Runs/Description.h"
#include "tarnway_cuda/CudaImageView.h"

namespace zel::tool {

namespace {

void requireDevice(cudaError_t status) {
    if (status != cudaSuccess) {
        throw std::runtime_error(std::string("the device cannot be used: ") + cudaGetErrorString(status));
    }
}

}  // namespace

int requireDevices() {
    int count = 0;
    const cudaError_t status = cudaGetDeviceCount(&count);
    if (status == cudaSuccess && count > 0) return count;
    const bool isOldDriver = status == cudaErrorInsufficientDriver;
    std::string missing = isOldDriver ? "the GPU's driver is missing or too old for it" : "there is no device for it";
    if (status != cudaSuccess) missing += std::string(" (") + cudaGetErrorString(status) + ")";
    throw std::runtime_error(std::string("this is the ") + buildName + ", and " + missing + "; " + withoutDevice);
}

void selectDevice(int device) {
    requireDevice(cudaSetDevice(device));
}

DeviceMemory deviceMemory() {
    std::size_t free = 0, total = 0;
    requireDevice(cudaMemGetInfo(&free, &total));
    return {free, total};
}

std::string deviceName(int device) {
    cudaDeviceProp properties{};
    requireDevice(cudaGetDeviceProperties(&properties, device));
    return properties.name;
}

bool readsHostMemory(int device) {
    int answer = 0;
    requireDevice(cudaDeviceGetAttribute(&answer, cudaDevAttrPageableMemoryAccess, device));
    return answer != 0;
}

int currentDevice() {
    int device = 0;
    requireDevice(cudaGetDevice(&device));
    return device;
}

TarnwayImage makeDeviceImage(VoxelTypes type, const ImageSize& size) {
    try {
        return TarnwayImage(
            tarnway_cuda::CudaImageView::allocate(static_cast<tarnway::ElementType>(type), size.x, size.y, size.z));
    } catch (const std::bad_alloc&) {
        const DeviceMemory memory = deviceMemory();
        throw std::runtime_error("an image of " + toText(size) + " needs " +
                                 bytesToText(imageBytes(type, size).value_or(UINT64_MAX)) + " of device memory, and " +
                                 bytesToText(memory.free) + " of " + bytesToText(memory.total) +
                                 " are free; leave the images on the host and use --tile auto");
    }
}

}  // namespace zel::tool
