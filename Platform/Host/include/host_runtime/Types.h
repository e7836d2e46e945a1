#pragma once

#include <cstddef>

// The vendor's types and enumerators, as far as this system uses them, with the vendor's numbers.

enum cudaError_t {
    cudaSuccess = 0,
    cudaErrorInvalidValue = 1,
    cudaErrorMemoryAllocation = 2,
    cudaErrorInitializationError = 3,
    cudaErrorCudartUnloading = 4,
    cudaErrorInvalidConfiguration = 9,
    cudaErrorInvalidPitchValue = 12,
    cudaErrorInvalidHostPointer = 16,
    cudaErrorInvalidDevicePointer = 17,
    cudaErrorInvalidMemcpyDirection = 21,
    cudaErrorInsufficientDriver = 35,
    cudaErrorDevicesUnavailable = 46,
    cudaErrorInvalidDeviceFunction = 98,
    cudaErrorNoDevice = 100,
    cudaErrorInvalidDevice = 101,
    cudaErrorDeviceUninitialized = 201,
    cudaErrorNoKernelImageForDevice = 209,
    cudaErrorOperatingSystem = 304,
    cudaErrorInvalidResourceHandle = 400,
    cudaErrorIllegalState = 401,
    cudaErrorNotReady = 600,
    cudaErrorIllegalAddress = 700,
    cudaErrorLaunchOutOfResources = 701,
    cudaErrorLaunchTimeout = 702,
    cudaErrorContextIsDestroyed = 709,
    cudaErrorAssert = 710,
    cudaErrorIllegalInstruction = 715,
    cudaErrorMisalignedAddress = 716,
    cudaErrorLaunchFailure = 719,
    cudaErrorNotPermitted = 800,
    cudaErrorNotSupported = 801,
    cudaErrorUnknown = 999,
};

enum cudaMemcpyKind {
    cudaMemcpyHostToHost = 0,
    cudaMemcpyHostToDevice = 1,
    cudaMemcpyDeviceToHost = 2,
    cudaMemcpyDeviceToDevice = 3,
    cudaMemcpyDefault = 4,  ///< each side is looked up among the live allocations
};

enum cudaDeviceAttr {
    cudaDevAttrComputeCapabilityMajor = 75,
    cudaDevAttrComputeCapabilityMinor = 76,
    cudaDevAttrPageableMemoryAccess = 88,
};

inline constexpr unsigned int cudaStreamDefault = 0;

using cudaStream_t = struct CUstream_st*;

struct uint3 {
    unsigned int x, y, z;
};

struct dim3 {
    unsigned int x, y, z;

    constexpr dim3(unsigned int x_ = 1, unsigned int y_ = 1, unsigned int z_ = 1) : x(x_), y(y_), z(z_) {}
    constexpr dim3(uint3 v) : x(v.x), y(v.y), z(v.z) {}
};

struct alignas(8) float2 {
    float x, y;
};
struct alignas(16) double2 {
    double x, y;
};
constexpr float2 make_float2(float x, float y) {
    return {x, y};
}
constexpr double2 make_double2(double x, double y) {
    return {x, y};
}
constexpr uint3 make_uint3(unsigned int x, unsigned int y, unsigned int z) {
    return {x, y, z};
}

struct cudaPitchedPtr {
    void* ptr;
    std::size_t pitch;  ///< bytes from row to row
    std::size_t xsize;  ///< width of a row in bytes
    std::size_t ysize;  ///< rows of a slice
};
struct cudaExtent {
    std::size_t width;  ///< bytes
    std::size_t height, depth;
};
struct cudaPos {
    std::size_t x;  ///< bytes
    std::size_t y, z;
};
constexpr cudaPitchedPtr make_cudaPitchedPtr(void* ptr, std::size_t pitch, std::size_t xsize, std::size_t ysize) {
    return {ptr, pitch, xsize, ysize};
}
constexpr cudaExtent make_cudaExtent(std::size_t width, std::size_t height, std::size_t depth) {
    return {width, height, depth};
}
constexpr cudaPos make_cudaPos(std::size_t x, std::size_t y, std::size_t z) {
    return {x, y, z};
}

using cudaArray_t = struct cudaArray*;

/// Arrays do not exist here: a copy that names one is refused.
struct cudaMemcpy3DParms {
    cudaArray_t srcArray;
    cudaPos srcPos;
    cudaPitchedPtr srcPtr;
    cudaArray_t dstArray;
    cudaPos dstPos;
    cudaPitchedPtr dstPtr;
    cudaExtent extent;
    cudaMemcpyKind kind;
};

struct cudaDeviceProp {
    char name[256];
    std::size_t totalGlobalMem;
    std::size_t sharedMemPerBlock;
    int maxThreadsPerBlock;
    int maxThreadsPerMultiProcessor;
    int multiProcessorCount;
    int major, minor;
};

struct cudaLaunchAttribute;

struct cudaLaunchConfig_t {
    dim3 gridDim;
    dim3 blockDim;
    std::size_t dynamicSmemBytes;
    cudaStream_t stream;
    cudaLaunchAttribute* attrs;
    unsigned int numAttrs;
};
