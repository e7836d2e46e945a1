#pragma once

#include <algorithm>

#include "NonLocalMeans/CudaAmnlmData.h"
#include "NonLocalMeans/DeviceVector.h"

/// Element-wise, channel and resolution operations on the filter's data. `out` is allocated by the caller.
namespace amnlm {

/// Whether two images differ in their channels at most.
inline bool haveEqualExtents(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b) {
    return std::equal(a.dims, a.dims + 3, b.dims);
}

/// These work on all elements of the first operand and return when they are done; `out` may be one of the operands.
/// @throws thrust::system::system_error when the device fails.
void subtractData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out);
void multiplyData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out);
void addData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out);
/// a / b where b is above the rounding unit 2^-23, else 0.
void divideData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out);
/// sum + a * b, in the sum. Queued on the default stream, the launch is not checked.
void addProductData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& sum);
/// a where the mask, one entry an element, is true, else 0.
void maskData(const RkCUDAAMNLMData& a, const DeviceVector<bool>& mask, RkCUDAAMNLMData& out);

/// These take images (Z, Y, X, C), queue on the default stream and do not check the launch. `out` is none of the
/// operands.

/// The channels of `a`, then those of `b`; as many as `out` has together, of the same extents.
void concatData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out);
/// Channels `first` to `last` - 1 of `in`.
void extractData(const RkCUDAAMNLMData& in, std::int32_t first, std::int32_t last, RkCUDAAMNLMData& out);
/// Resamples to the extents of `out` by trilinear interpolation, first voxel onto first and last onto last. Nothing is
/// averaged on the way down. A corner beyond the last voxel of `in` counts as 0; an axis of extent 1 takes the first
/// sample. Equal extents are a plain copy, whose failure resets the device and raises RuntimeError.
void scaleData(const RkCUDAAMNLMData& in, RkCUDAAMNLMData& out);
/// The same for data that nobody needs any more: equal extents exchange their memory.
void scaleData(RkCUDAAMNLMData&& in, RkCUDAAMNLMData& out);
/// Exchanges the memory of two operands of equal extents.
void exchangeData(RkCUDAAMNLMData& a, RkCUDAAMNLMData& b);

}  // namespace amnlm
