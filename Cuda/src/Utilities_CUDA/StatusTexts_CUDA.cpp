#include "StatusTexts_CUDA.h"

#include <algorithm>
#include <iterator>

namespace zel::cuda {

namespace {

struct StatusText {
    int status;
    const char* text;
};

constexpr StatusText cufftTexts[] = {
    {0, "The cuFFT operation was successful"},
    {1, "cuFFT was passed an invalid plan handle"},
    {2, "cuFFT failed to allocate GPU or CPU memory"},
    {3, "Invalid type"},
    {4, "User specified an invalid pointer or parameter"},
    {5, "Driver or internal cuFFT library error"},
    {6, "Failed to execute an FFT on the GPU"},
    {7, "The cuFFT library failed to initialize"},
    {8, "User specified an invalid transform size"},
    {9, "Unaligned data"},
    {10, "Missing parameters in call"},
    {11, "Execution of a plan was on different GPU than plan creation"},
    {12, "Internal plan database error"},
    {13, "No workspace has been provided prior to plan execution"},
    {14, "Function does not implement functionality for parameters given"},
    {15, "Used in previous versions"},
    {16, "Operation is not supported for parameters given"},
};

constexpr StatusText nppTexts[] = {
    {-9999, "Not supported mode."},
    {-1032, "Invalid host pointer."},
    {-1031, "Invalid device pointer."},
    {-1030, "LUT palette bitsize error"},
    {-1028, "ZeroCrossing mode not supported."},
    {-1027, "Not sufficient compute capability."},
    {-1024, "Texture bind error."},
    {-1020, "Wrong intersection roi."},
    {-1006, "HAAR classifier pixel match error."},
    {-1005, "Memfree error."},
    {-1004, "Memset error."},
    {-1003, "Memcpy error."},
    {-1002, "Alignment error"},
    {-1000, "Cuda kernel execution error."},
    {-213, "Unsupported round mode."},
    {-210, "Image pixels are constant for quality index."},
    {-201, "One of the output image dimensions is less than 1 pixel."},
    {-109, "Number overflows the upper or lower limit of the data type."},
    {-108, "Step value is not pixel multiple."},
    {-107, "Number of levels for histogram is less than 2."},
    {-106, "Number of levels for LUT is less than 2."},
    {-61, "Processed data is corrupted"},
    {-60, "Wrong order of the destination channels."},
    {-59, "All values of the mask are zero."},
    {-58, "The quadrangle is nonconvex or degenerates into triangle, line or point."},
    {-57, "Size of the rectangle region is less than or equal to 1."},
    {-56, "Unallowable values of the transformation coefficients."},
    {-53, "Bad or unsupported number of channels."},
    {-52, "Channel of interest is not 1, 2, or 3."},
    {-51, "Divisor is equal to zero."},
    {-47, "Illegal channel index."},
    {-37, "Stride is less than the row length."},
    {-34, "Anchor point is outside mask."},
    {-33, "Lower bound is larger than upper bound."},
    {-23, "Resize factor error"},
    {-22, "Interpolation error."},
    {-21, "Mirror flip error."},
    {-20, "Moment 00 zero error."},
    {-19, "Threshold negative level."},
    {-18, "Threshold error."},
    {-17, "Context match error."},
    {-16, "FFT flag error."},
    {-15, "FFT order error."},
    {-14, "Step is less or equal zero."},
    {-13, "Scale range error."},
    {-12, "Data type error."},
    {-11, "Out off range."},
    {-10, "Divide by zero."},
    {-9, "Memory allocation error"},
    {-8, "Null pointer error."},
    {-7, "Range error."},
    {-6, "Size error."},
    {-5, "Bad argument"},
    {-4, "No memory error."},
    {-3, "Not implemented error."},
    {-2, "NPP error"},
    {-1, "Error reserved."},
    {0, "Successful operation."},
    {1, "Indicates that no operation was performed."},
    {6, "Divisor is zero however does not terminate the execution."},
    {28,
     "Indicates that the quadrangle passed to one of affine warping functions doesn't have necessary properties. First "
     "3 vertices are used, the fourth vertex discarded."},
    {29,
     "The given ROI has no interestion with either the source or destination ROI. Thus no operation was performed."},
    {30,
     "The given quadrangle has no intersection with either the source or destination ROI. Thus no operation was "
     "performed."},
    {35,
     "Image size isn't multiple of two. Indicates that in case of 422/411/420 sampling the ROI width/height was "
     "modified for proper processing."},
    {10000, "Speed reduction due to uncoalesced memory accesses warning."},
};

template <typename Table>
const char* textOf(const Table& table, int status) {
    const auto found =
        std::find_if(std::begin(table), std::end(table), [=](auto& entry) { return entry.status == status; });
    return found == std::end(table) ? "<unknown>" : found->text;
}

}  // namespace

const char* cufftStatusText(int status) {
    return textOf(cufftTexts, status);
}

const char* nppStatusText(int status) {
    return textOf(nppTexts, status);
}

}  // namespace zel::cuda
