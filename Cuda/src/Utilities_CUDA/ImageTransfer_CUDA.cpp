#include "ImageTransfer_CUDA.h"

#include <algorithm>

#include "OffsetBytes.h"
#include "StagedRows_CUDA.h"
#include "StatusChecks_CUDA.h"

namespace zel::cuda {

namespace {

std::size_t rowBytesOf(const ImageModel& image) {
    return helper::getSizeOf(image.getDataType()) * image.getDimension(0);
}

void copyRows(void* dst, std::size_t dstPitch, const void* src, std::size_t srcPitch, std::size_t rowBytes,
              std::size_t rows, cudaMemcpyKind kind, cudaStream_t stream) {
    checkCudaStatus(cudaMemcpy2DAsync(dst, dstPitch, src, srcPitch, rowBytes, rows, kind, stream));
    checkCudaStatus(cudaDeviceSynchronize());
}

/// Slices in device memory, the rows of a slice counted with those that are only padding.
cudaPitchedPtr deviceSlices(const void* device, std::size_t pitch, std::size_t slicePitch, std::size_t rowBytes,
                            std::size_t height) {
    return make_cudaPitchedPtr(const_cast<void*>(device), pitch, rowBytes, std::max(height, slicePitch / pitch));
}

/// Slices in host memory without gaps.
cudaPitchedPtr hostSlices(const void* host, std::size_t rowBytes, std::size_t height) {
    return make_cudaPitchedPtr(const_cast<void*>(host), rowBytes, rowBytes, height);
}

void copySlices(const cudaPitchedPtr& dst, const cudaPitchedPtr& src, std::size_t rowBytes, std::size_t rows,
                std::size_t slices, cudaMemcpyKind kind, cudaStream_t stream) {
    cudaMemcpy3DParms copy{};
    copy.srcPtr = src;
    copy.dstPtr = dst;
    copy.extent = make_cudaExtent(rowBytes, rows, slices);
    copy.kind = kind;
    checkCudaStatus(cudaMemcpy3DAsync(&copy, stream));
    checkCudaStatus(cudaDeviceSynchronize());
}

}  // namespace

void copyImageToDevice2d(const ImageModel& image, void* device, std::size_t pitch, std::size_t i3, std::size_t i4,
                         cudaStream_t stream) {
    const std::size_t rowBytes = rowBytesOf(image);
    const void* const host = image.hostDataReadOnly();
    if (host != nullptr && image.getDimension(4) == 1) {
        copyRows(device, pitch, host, rowBytes, rowBytes, image.getDimension(1), cudaMemcpyHostToDevice, stream);
        return;
    }
    StagedRows staging(rowBytes);
    staging.forEachChunk(image.getDimension(1), [&](const StagedRows::Chunk& chunk) {
        staging.readFrom(image, chunk, {0, i3, i4});
        copyRows(offsetBytes(device, pitch * chunk.firstRow), pitch, staging.data(), rowBytes, rowBytes, chunk.rows,
                 cudaMemcpyHostToDevice, stream);
    });
}

void copyDeviceToImage2d(const void* device, std::size_t pitch, ImageModel& image, std::size_t i3, std::size_t i4,
                         cudaStream_t stream) {
    const std::size_t rowBytes = rowBytesOf(image);
    void* const host = image.hostDataWritable();
    if (host != nullptr && image.getDimension(4) == 1) {
        copyRows(host, rowBytes, device, pitch, rowBytes, image.getDimension(1), cudaMemcpyDeviceToHost, stream);
        return;
    }
    StagedRows staging(rowBytes);
    staging.forEachChunk(image.getDimension(1), [&](const StagedRows::Chunk& chunk) {
        copyRows(staging.data(), rowBytes, offsetBytes(device, pitch * chunk.firstRow), pitch, rowBytes, chunk.rows,
                 cudaMemcpyDeviceToHost, stream);
        staging.writeTo(image, chunk, {0, i3, i4});
    });
}

void copyImageToDevice3d(const ImageModel& image, void* device, std::size_t pitch, std::size_t slicePitch,
                         std::size_t i3, std::size_t i4, cudaStream_t stream) {
    const std::size_t rowBytes = rowBytesOf(image);
    const std::size_t height = image.getDimension(1);
    const std::size_t depth = image.getDimension(2);
    const void* const host = image.hostDataReadOnly();
    if (host != nullptr && image.getDimension(4) == 1) {
        copySlices(deviceSlices(device, pitch, slicePitch, rowBytes, height), hostSlices(host, rowBytes, height),
                   rowBytes, height, depth, cudaMemcpyHostToDevice, stream);
        return;
    }
    StagedRows staging(rowBytes);
    for (std::size_t z = 0; z < depth; ++z) {
        staging.forEachChunk(height, [&](const StagedRows::Chunk& chunk) {
            staging.readFrom(image, chunk, {z, i3, i4});
            void* const target = offsetBytes(device, slicePitch * z + pitch * chunk.firstRow);
            copySlices(deviceSlices(target, pitch, slicePitch, rowBytes, height),
                       hostSlices(staging.data(), rowBytes, chunk.rows), rowBytes, chunk.rows, 1,
                       cudaMemcpyHostToDevice, stream);
        });
    }
}

void copyDeviceToImage3d(const void* device, std::size_t pitch, std::size_t slicePitch, ImageModel& image,
                         std::size_t i3, std::size_t i4, cudaStream_t stream) {
    const std::size_t rowBytes = rowBytesOf(image);
    const std::size_t height = image.getDimension(1);
    const std::size_t depth = image.getDimension(2);
    void* const host = image.hostDataWritable();
    if (host != nullptr && image.getDimension(4) == 1) {
        copySlices(hostSlices(host, rowBytes, height), deviceSlices(device, pitch, slicePitch, rowBytes, height),
                   rowBytes, height, depth, cudaMemcpyDeviceToHost, stream);
        return;
    }
    StagedRows staging(rowBytes);
    for (std::size_t z = 0; z < depth; ++z) {
        staging.forEachChunk(height, [&](const StagedRows::Chunk& chunk) {
            const void* const source = offsetBytes(device, slicePitch * z + pitch * chunk.firstRow);
            copySlices(hostSlices(staging.data(), rowBytes, chunk.rows),
                       deviceSlices(source, pitch, slicePitch, rowBytes, height), rowBytes, chunk.rows, 1,
                       cudaMemcpyDeviceToHost, stream);
            staging.writeTo(image, chunk, {z, i3, i4});
        });
    }
}

}  // namespace zel::cuda
