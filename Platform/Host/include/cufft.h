#pragma once

#include <cuda_runtime.h>

#include <cstddef>

#include "host_runtime/export.h"

// Result codes of the vendor's FFT library, with the enumerators that its newest version has dropped.
enum cufftResult {
    CUFFT_SUCCESS = 0,
    CUFFT_INVALID_PLAN = 1,
    CUFFT_ALLOC_FAILED = 2,
    CUFFT_INVALID_TYPE = 3,
    CUFFT_INVALID_VALUE = 4,
    CUFFT_INTERNAL_ERROR = 5,
    CUFFT_EXEC_FAILED = 6,
    CUFFT_SETUP_FAILED = 7,
    CUFFT_INVALID_SIZE = 8,
    CUFFT_UNALIGNED_DATA = 9,
    CUFFT_INCOMPLETE_PARAMETER_LIST = 10,
    CUFFT_INVALID_DEVICE = 11,
    CUFFT_PARSE_ERROR = 12,
    CUFFT_NO_WORKSPACE = 13,
    CUFFT_NOT_IMPLEMENTED = 14,
    CUFFT_LICENSE_ERROR = 15,
    CUFFT_NOT_SUPPORTED = 16,
};

using cufftHandle = int;
using cufftReal = float;
using cufftDoubleReal = double;
using cufftComplex = float2;
using cufftDoubleComplex = double2;

/// Transforms of real data to the half spectrum and back; the complex ones do not exist here.
enum cufftType {
    CUFFT_R2C = 0x2a,
    CUFFT_C2R = 0x2c,
    CUFFT_D2Z = 0x6a,
    CUFFT_Z2D = 0x6c,
};

// A plan is made with its sizes, the axis that moves fastest being the last. Real data are packed; of the spectrum the
// last axis has n / 2 + 1 elements, packed too. Transforms are unnormalised: there and back multiplies by the number of
// real elements. Results do not depend on the number of threads.
//
// Every call returns CUFFT_INVALID_PLAN for a handle that names no plan, also one whose device was reset.

/// CUFFT_SETUP_FAILED where there is no device.
ZEL_HOST_API cufftResult cufftCreate(cufftHandle* plan);
/// Whether making the plan allocates its work area; it does unless told otherwise. Before the plan is made.
ZEL_HOST_API cufftResult cufftSetAutoAllocation(cufftHandle plan, int autoAllocate);
ZEL_HOST_API cufftResult cufftSetStream(cufftHandle plan, cudaStream_t stream);
/// Bytes of the work area of such a plan: those of its spectrum.
ZEL_HOST_API cufftResult cufftGetSize2d(cufftHandle plan, int nx, int ny, cufftType type, std::size_t* workSize);
ZEL_HOST_API cufftResult cufftGetSize3d(cufftHandle plan, int nx, int ny, int nz, cufftType type,
                                        std::size_t* workSize);
ZEL_HOST_API cufftResult cufftSetWorkArea(cufftHandle plan, void* workArea);
/// @return CUFFT_INVALID_SIZE for an axis below 1, or above 2^27 elements in single and 2^26 in double precision;
///         CUFFT_ALLOC_FAILED when device or machine lack the memory; CUFFT_INVALID_PLAN for a handle made before.
ZEL_HOST_API cufftResult cufftMakePlan2d(cufftHandle plan, int nx, int ny, cufftType type, std::size_t* workSize);
ZEL_HOST_API cufftResult cufftMakePlan3d(cufftHandle plan, int nx, int ny, int nz, cufftType type,
                                         std::size_t* workSize);

// Input and output are device memory and must not overlap; an inverse transform may overwrite its input.
/// @return CUFFT_INVALID_PLAN for a plan of another type or one not made yet, CUFFT_NO_WORKSPACE without the work area
///         that it needs, CUFFT_INVALID_DEVICE where its device is not the current one, CUFFT_INVALID_VALUE for
///         addresses outside live device memory, CUFFT_NOT_SUPPORTED for input and output that overlap.
ZEL_HOST_API cufftResult cufftExecR2C(cufftHandle plan, cufftReal* input, cufftComplex* output);
ZEL_HOST_API cufftResult cufftExecC2R(cufftHandle plan, cufftComplex* input, cufftReal* output);
ZEL_HOST_API cufftResult cufftExecD2Z(cufftHandle plan, cufftDoubleReal* input, cufftDoubleComplex* output);
ZEL_HOST_API cufftResult cufftExecZ2D(cufftHandle plan, cufftDoubleComplex* input, cufftDoubleReal* output);

ZEL_HOST_API cufftResult cufftDestroy(cufftHandle plan);
