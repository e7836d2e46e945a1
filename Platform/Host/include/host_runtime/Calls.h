#pragma once

#include "Types.h"
#include "export.h"

// The vendor's runtime calls. Each keeps the vendor's contract: it returns a status, which also becomes the calling
// thread's pending error when it is not cudaSuccess.

ZEL_HOST_API cudaError_t cudaGetLastError();
ZEL_HOST_API cudaError_t cudaPeekAtLastError();
ZEL_HOST_API const char* cudaGetErrorString(cudaError_t status);

/// Succeeds with 0 where there is no device.
ZEL_HOST_API cudaError_t cudaGetDeviceCount(int* count);
ZEL_HOST_API cudaError_t cudaGetDevice(int* device);
ZEL_HOST_API cudaError_t cudaSetDevice(int device);
ZEL_HOST_API cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device);
ZEL_HOST_API cudaError_t cudaDeviceGetAttribute(int* value, cudaDeviceAttr attribute, int device);
ZEL_HOST_API cudaError_t cudaDeviceSynchronize();
/// Ends every allocation, stream and plan of the current device. Giving one back afterwards returns an error and
/// leaves no pending one, unless a test mode wants it as on a GPU.
ZEL_HOST_API cudaError_t cudaDeviceReset();

ZEL_HOST_API cudaError_t cudaMalloc(void** address, std::size_t bytes);
/// The pitch is a multiple of 256 bytes.
ZEL_HOST_API cudaError_t cudaMallocPitch(void** address, std::size_t* pitch, std::size_t widthBytes,
                                         std::size_t height);
ZEL_HOST_API cudaError_t cudaMalloc3D(cudaPitchedPtr* pitched, cudaExtent extent);
ZEL_HOST_API cudaError_t cudaFree(void* address);
ZEL_HOST_API cudaError_t cudaMemGetInfo(std::size_t* freeBytes, std::size_t* totalBytes);

ZEL_HOST_API cudaError_t cudaMemcpy(void* dst, const void* src, std::size_t bytes, cudaMemcpyKind kind);
ZEL_HOST_API cudaError_t cudaMemcpyAsync(void* dst, const void* src, std::size_t bytes, cudaMemcpyKind kind,
                                         cudaStream_t stream = nullptr);
ZEL_HOST_API cudaError_t cudaMemcpy2DAsync(void* dst, std::size_t dstPitch, const void* src, std::size_t srcPitch,
                                           std::size_t widthBytes, std::size_t height, cudaMemcpyKind kind,
                                           cudaStream_t stream = nullptr);
ZEL_HOST_API cudaError_t cudaMemcpy3DAsync(const cudaMemcpy3DParms* copy, cudaStream_t stream = nullptr);
ZEL_HOST_API cudaError_t cudaMemsetAsync(void* address, int value, std::size_t bytes, cudaStream_t stream = nullptr);

ZEL_HOST_API cudaError_t cudaStreamCreate(cudaStream_t* stream);
ZEL_HOST_API cudaError_t cudaStreamDestroy(cudaStream_t stream);
ZEL_HOST_API cudaError_t cudaStreamGetFlags(cudaStream_t stream, unsigned int* flags);
ZEL_HOST_API cudaError_t cudaStreamSynchronize(cudaStream_t stream);

template <class T>
cudaError_t cudaMalloc(T** address, std::size_t bytes) {
    return cudaMalloc(static_cast<void**>(static_cast<void*>(address)), bytes);
}

template <class T>
cudaError_t cudaMallocPitch(T** address, std::size_t* pitch, std::size_t widthBytes, std::size_t height) {
    return cudaMallocPitch(static_cast<void**>(static_cast<void*>(address)), pitch, widthBytes, height);
}
