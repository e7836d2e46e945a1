#include "tarnway_cuda/CudaImageView.h"

#include <cuda_runtime.h>

#include <cstdint>
#include <new>
#include <stdexcept>
#include <string>

namespace tarnway_cuda {

using tarnway::ImageDimension;
using tarnway::ImageInfoProperty;
using tarnway::VectorX;

namespace {

std::string sizeText(const ImageInfoProperty& info) {
    std::string text;
    for (std::size_t i = 0; i < info.sizes().size(); ++i) {
        text += (i == 0 ? "" : " x ") + std::to_string(info.sizes()[i]);
    }
    return text + " elements of " + std::to_string(elementSize(info.elementType())) + " bytes";
}

std::size_t countedProduct(const ImageInfoProperty& info, std::size_t a, std::size_t b) {
    std::size_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) {
        throw std::invalid_argument("a view of " + sizeText(info) + " has more bytes than this machine can count");
    }
    return product;
}

std::size_t rowBytes(const ImageInfoProperty& info) {
    return countedProduct(info, info.sizes()[0], elementSize(info.elementType()));
}

/// Rows of all slices, whose bytes can be counted.
std::size_t rowCount(const ImageInfoProperty& info, std::size_t rowPitchBytes) {
    std::size_t rows = 1;
    for (std::size_t i = 1; i < info.sizes().size(); ++i) rows = countedProduct(info, rows, info.sizes()[i]);
    countedProduct(info, rows, rowPitchBytes);
    return rows;
}

/// Of a slice or a volume.
ImageInfoProperty infoOf(tarnway::ElementType type, std::size_t width, std::size_t height, std::size_t depth) {
    const bool flat = depth == 1;
    VectorX<std::size_t> sizes(flat ? 2 : 3);
    sizes[0] = width;
    sizes[1] = height;
    if (!flat) sizes[2] = depth;
    return {type, flat ? tarnway::ImageType{} : tarnway::ImageType{ImageDimension::z}, sizes};
}

VectorX<std::size_t> packedRowsStride(const ImageInfoProperty& info, std::size_t rowPitchBytes) {
    VectorX<std::size_t> stride(info.sizes().size());
    stride[0] = elementSize(info.elementType());
    stride[1] = rowPitchBytes;
    for (std::size_t i = 2; i < stride.size(); ++i) stride[i] = stride[i - 1] * info.sizes()[i - 1];
    return stride;
}

/// A row access that fails is told by its result; the runtime must not tell it a second time to the next call.
bool succeeded(cudaError_t status) {
    if (status == cudaSuccess) return true;
    cudaGetLastError();
    return false;
}

}  // namespace

CudaImageView::CudaImageView(const ImageInfoProperty& info, std::shared_ptr<void> data, std::size_t rowPitchBytes)
    : properties_(info), indexer_(packedRowsStride(info, rowPitchBytes)), data_(std::move(data)) {}

CudaImageView::~CudaImageView() = default;

std::shared_ptr<CudaImageView> CudaImageView::allocate(tarnway::ElementType type, std::size_t width, std::size_t height,
                                                       std::size_t depth) {
    return allocate(infoOf(type, width, height, depth));
}

std::shared_ptr<CudaImageView> CudaImageView::allocate(const ImageInfoProperty& info) {
    void* address = nullptr;
    std::size_t pitch = 0;
    const std::size_t widthBytes = rowBytes(info);
    if (!succeeded(cudaMallocPitch(&address, &pitch, widthBytes, rowCount(info, widthBytes)))) throw std::bad_alloc();
    std::shared_ptr<void> owner(address, [](void* memory) { succeeded(cudaFree(memory)); });
    return std::shared_ptr<CudaImageView>(new CudaImageView(info, std::move(owner), pitch));
}

std::shared_ptr<CudaImageView> CudaImageView::wrap(const ImageInfoProperty& info, void* deviceAddress,
                                                   std::size_t rowPitchBytes) {
    const std::size_t element = elementSize(info.elementType());
    if (reinterpret_cast<std::uintptr_t>(deviceAddress) % element != 0) {
        throw std::invalid_argument("the address of a view of " + sizeText(info) + " is no multiple of the element");
    }
    if (rowPitchBytes < rowBytes(info) || rowPitchBytes == 0 || rowPitchBytes % element != 0) {
        throw std::invalid_argument("the row pitch of a view of " + sizeText(info) + " is " +
                                    std::to_string(rowPitchBytes) +
                                    " bytes; it must be a multiple of the element and " + "at least a row");
    }
    rowCount(info, rowPitchBytes);
    std::shared_ptr<void> borrowed(deviceAddress, [](void*) {});
    return std::shared_ptr<CudaImageView>(new CudaImageView(info, std::move(borrowed), rowPitchBytes));
}

std::shared_ptr<CudaImageView> CudaImageView::wrap(tarnway::ElementType type, std::size_t width, std::size_t height,
                                                   std::size_t depth, void* deviceAddress) {
    const ImageInfoProperty info = infoOf(type, width, height, depth);
    return wrap(info, deviceAddress, rowBytes(info));
}

bool CudaImageView::contains(std::size_t count, const VectorX<std::size_t>& index) const {
    const VectorX<std::size_t>& sizes = properties_.imageInfo().sizes();
    if (index.size() != sizes.size() || index[0] > sizes[0] || count > sizes[0] - index[0]) return false;
    for (std::size_t i = 1; i < sizes.size(); ++i) {
        if (index[i] >= sizes[i]) return false;
    }
    return true;
}

bool CudaImageView::readRow(std::size_t count, void* buffer, const VectorX<std::size_t>& index) const {
    if (!contains(count, index)) return false;
    const auto* source = static_cast<const std::byte*>(data_.get()) + indexer_.byteOffset(index);
    return succeeded(cudaMemcpy(buffer, source, count * indexer_.byteStride()[0], cudaMemcpyDeviceToHost));
}

bool CudaImageView::writeRow(std::size_t count, const void* buffer, const VectorX<std::size_t>& index) {
    if (!contains(count, index)) return false;
    auto* target = static_cast<std::byte*>(data_.get()) + indexer_.byteOffset(index);
    return succeeded(cudaMemcpy(target, buffer, count * indexer_.byteStride()[0], cudaMemcpyHostToDevice));
}

}  // namespace tarnway_cuda
