#pragma once

#include "nppi_functions.h"

// Erosion gives the smallest pixel under a mask, dilation the largest. Mask byte (i, j) that is not 0 lies on the
// source pixel (x - anchor.x + i, y - anchor.y + j) of output pixel (x, y): the mask is not mirrored, not by dilation
// either. A position outside the source image takes the nearest image pixel. NaN is passed over, and where the mask
// selects no number the result is NaN; -0 counts as smaller than +0. So a result has the same bits however an image is
// cut.
//
// In all functions:
//   pSrc         device memory, the source pixel of the region's first pixel; steps are in bytes.
//   oSrcSize     the whole source image, whose pixel (0, 0) lies oSrcOffset before pSrc.
//   oSizeROI     pixels to write; the region lies inside the source image. pDst must not overlap the source.
//   eBorderType  NPP_BORDER_REPLICATE, else NPP_NOT_SUPPORTED_MODE_ERROR.
// They return queued work's status, with the first fault found among: null pointers, sizes, steps, alignment, region,
// mask size, anchor, border, addresses outside live device memory.

/// nppiErode3x3Border_*, nppiDilate3x3Border_*: by the square of 3 by 3 pixels around the output pixel.
#define ZEL_NPP_SQUARE_FUNCTION(filter, suffix, Pixel) ZEL_NPP_FUNCTION(filter##3x3Border, suffix, Pixel)

/// nppiErodeBorder_*, nppiDilateBorder_*: by any mask. One of zeros, which the call cannot see, selects nothing:
/// erosion then gives the type's largest integer, dilation its smallest.
///
/// @param pMask        device memory, oMaskSize.height rows of oMaskSize.width bytes without padding; read when the
///                     work's turn comes in the stream.
/// @param oMaskSize    any size of at least 1, also beyond the image.
/// @param oAnchor      inside the mask.
#define ZEL_NPP_MASK_FUNCTION(filter, suffix, Pixel) \
    ZEL_NPP_FUNCTION(filter##Border, suffix, Pixel, const Npp8u* pMask, NppiSize oMaskSize, NppiPoint oAnchor)

#define ZEL_NPP_DECLARE(...)                           \
    ZEL_HOST_API ZEL_NPP_SQUARE_FUNCTION(__VA_ARGS__); \
    ZEL_HOST_API ZEL_NPP_MASK_FUNCTION(__VA_ARGS__);
ZEL_NPP_MORPHOLOGY_FILTERS(ZEL_NPP_DECLARE)
#undef ZEL_NPP_DECLARE
