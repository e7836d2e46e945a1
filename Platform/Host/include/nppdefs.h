#pragma once

#include <cuda_runtime.h>

#include <cstddef>

// Types of the vendor's image filters. Names, order of fields and numbers are the vendor's; the status codes are those
// of toolkits 11 and 12 (toolkit 13 gave a few of them new numbers).

using Npp8u = unsigned char;
using Npp8s = signed char;
using Npp16u = unsigned short;
using Npp16s = short;
using Npp32u = unsigned int;
using Npp32s = int;
using Npp32f = float;
using Npp64f = double;

struct NppiSize {
    int width;
    int height;
};

struct NppiPoint {
    int x;
    int y;
};

enum NppiBorderType {
    NPP_BORDER_UNDEFINED = 0,
    NPP_BORDER_NONE = NPP_BORDER_UNDEFINED,
    NPP_BORDER_CONSTANT = 1,
    NPP_BORDER_REPLICATE = 2,
    NPP_BORDER_WRAP = 3,
    NPP_BORDER_MIRROR = 4,  ///< the edge pixel is not repeated
};

enum NppStatus {
    NPP_NOT_SUPPORTED_MODE_ERROR = -9999,
    NPP_INVALID_HOST_POINTER_ERROR = -1032,
    NPP_INVALID_DEVICE_POINTER_ERROR = -1031,
    NPP_LUT_PALETTE_BITSIZE_ERROR = -1030,
    NPP_ZC_MODE_NOT_SUPPORTED_ERROR = -1028,
    NPP_NOT_SUFFICIENT_COMPUTE_CAPABILITY = -1027,
    NPP_TEXTURE_BIND_ERROR = -1024,
    NPP_WRONG_INTERSECTION_ROI_ERROR = -1020,
    NPP_HAAR_CLASSIFIER_PIXEL_MATCH_ERROR = -1006,
    NPP_MEMFREE_ERROR = -1005,
    NPP_MEMSET_ERROR = -1004,
    NPP_MEMCPY_ERROR = -1003,
    NPP_ALIGNMENT_ERROR = -1002,
    NPP_CUDA_KERNEL_EXECUTION_ERROR = -1000,
    NPP_ROUND_MODE_NOT_SUPPORTED_ERROR = -213,
    NPP_QUALITY_INDEX_ERROR = -210,
    NPP_RESIZE_NO_OPERATION_ERROR = -201,
    NPP_OVERFLOW_ERROR = -109,
    NPP_NOT_EVEN_STEP_ERROR = -108,
    NPP_HISTOGRAM_NUMBER_OF_LEVELS_ERROR = -107,
    NPP_LUT_NUMBER_OF_LEVELS_ERROR = -106,
    NPP_CORRUPTED_DATA_ERROR = -61,
    NPP_CHANNEL_ORDER_ERROR = -60,
    NPP_ZERO_MASK_VALUE_ERROR = -59,
    NPP_QUADRANGLE_ERROR = -58,
    NPP_RECTANGLE_ERROR = -57,
    NPP_COEFFICIENT_ERROR = -56,
    NPP_NUMBER_OF_CHANNELS_ERROR = -53,
    NPP_COI_ERROR = -52,
    NPP_DIVISOR_ERROR = -51,
    NPP_CHANNEL_ERROR = -47,
    NPP_STRIDE_ERROR = -37,
    NPP_ANCHOR_ERROR = -34,
    NPP_MASK_SIZE_ERROR = -33,
    NPP_RESIZE_FACTOR_ERROR = -23,
    NPP_INTERPOLATION_ERROR = -22,
    NPP_MIRROR_FLIP_ERROR = -21,
    NPP_MOMENT_00_ZERO_ERROR = -20,
    NPP_THRESHOLD_NEGATIVE_LEVEL_ERROR = -19,
    NPP_THRESHOLD_ERROR = -18,
    NPP_CONTEXT_MATCH_ERROR = -17,
    NPP_FFT_FLAG_ERROR = -16,
    NPP_FFT_ORDER_ERROR = -15,
    NPP_STEP_ERROR = -14,
    NPP_SCALE_RANGE_ERROR = -13,
    NPP_DATA_TYPE_ERROR = -12,
    NPP_OUT_OFF_RANGE_ERROR = -11,
    NPP_DIVIDE_BY_ZERO_ERROR = -10,
    NPP_MEMORY_ALLOCATION_ERR = -9,
    NPP_NULL_POINTER_ERROR = -8,
    NPP_RANGE_ERROR = -7,
    NPP_SIZE_ERROR = -6,
    NPP_BAD_ARGUMENT_ERROR = -5,
    NPP_NO_MEMORY_ERROR = -4,
    NPP_NOT_IMPLEMENTED_ERROR = -3,
    NPP_ERROR = -2,
    NPP_ERROR_RESERVED = -1,

    NPP_NO_ERROR = 0,
    NPP_SUCCESS = NPP_NO_ERROR,

    NPP_NO_OPERATION_WARNING = 1,
    NPP_DIVIDE_BY_ZERO_WARNING = 6,
    NPP_AFFINE_QUAD_INCORRECT_WARNING = 28,
    NPP_WRONG_INTERSECTION_ROI_WARNING = 29,
    NPP_WRONG_INTERSECTION_QUAD_WARNING = 30,
    NPP_DOUBLE_SIZE_WARNING = 35,
    NPP_MISALIGNED_DST_ROI_WARNING = 10000,
};

/// What a filter has to know about the device and the stream that it queues on; filled by the caller. The host looks at
/// hStream alone.
struct NppStreamContext {
    cudaStream_t hStream;
    int nCudaDeviceId;
    int nMultiProcessorCount;
    int nMaxThreadsPerMultiProcessor;
    int nMaxThreadsPerBlock;
    std::size_t nSharedMemPerBlock;
    int nCudaDevAttrComputeCapabilityMajor;
    int nCudaDevAttrComputeCapabilityMinor;
    unsigned int nStreamFlags;
    int nReserved0;
};
