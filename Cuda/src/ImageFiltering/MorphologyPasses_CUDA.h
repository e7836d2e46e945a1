#pragma once

#include <nppdefs.h>

#include <cstddef>

namespace zel::cuda {

/// Erosion or dilation by the square of (2 passes + 1) pixels or by the diamond of radius `passes`. That many passes of
/// the element of radius 1 give what one pass of the large element gives; they are made where there is a work area for
/// them. Pixels beyond the edge are those of the edge, in every pass. Returns when the device is done.
///
/// @tparam T      std::uint8_t, std::uint16_t or float.
/// @param src     device memory, as tmp and dst; pitches in bytes.
/// @param tmp     work area of the same size; null for none. It may be src, whose content is then lost; it is then of
///                use only when `passes` is odd.
/// @param dst     takes the result.
/// @param passes  at least 1.
/// @param square  the square, else the diamond.
/// @param dilate  dilation, else erosion.
/// @throws RuntimeError  when a call fails; dst and tmp then hold anything.
template <typename T>
void morphologyPasses(const T* src, std::size_t srcPitch, T* tmp, std::size_t tmpPitch, T* dst, std::size_t dstPitch,
                      NppiSize size, int passes, bool square, const NppStreamContext& context, bool dilate);

}  // namespace zel::cuda
