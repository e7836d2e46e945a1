#pragma once

#include "nppi_functions.h"

/// nppiFilterBoxBorder_*: mean over a rectangle: output pixel (x, y) is the mean of the source pixels x - anchor.x ...
/// x - anchor.x + mask.width - 1 (y alike), where a position outside the source image takes the nearest image pixel.
/// Integer sums are exact and the mean truncates toward zero. Float sums are pairwise ones, in an order that depends on
/// the mask alone: an image cut into tiles with margins gives the same bits as a whole one, and a NaN or infinity stays
/// within the windows that hold it. A window whose sum exceeds the largest float has an infinite mean.
///
/// @param pSrc         device memory, the source pixel of the region's first pixel; steps are in bytes.
/// @param oSrcSize     the whole source image, whose pixel (0, 0) lies oSrcOffset before pSrc.
/// @param oSizeROI     pixels to write; the region lies inside the source image. pDst must not overlap the source.
/// @param oMaskSize    any size of at least 1, also beyond the image.
/// @param oAnchor      inside the mask.
/// @param eBorderType  NPP_BORDER_REPLICATE, else NPP_NOT_SUPPORTED_MODE_ERROR.
/// @return             queued work's status, with the first fault found among: null pointers, sizes, steps, alignment,
///                     region, mask, anchor, border, addresses outside live device memory.
#define ZEL_NPP_BOX_FUNCTION(filter, suffix, Pixel) \
    ZEL_NPP_FUNCTION(filter##Border, suffix, Pixel, NppiSize oMaskSize, NppiPoint oAnchor)
#define ZEL_NPP_DECLARE(...) ZEL_HOST_API ZEL_NPP_BOX_FUNCTION(__VA_ARGS__);
ZEL_NPP_BOX_FILTERS(ZEL_NPP_DECLARE)
#undef ZEL_NPP_DECLARE

/// nppiFilterMedianBorder_*: median over a rectangle: of the n source pixels x - anchor.x ... x - anchor.x + mask.width
/// - 1 (y alike) of output pixel (x, y), the one with n / 2 (rounded down) before it in order. The source image goes on
/// mirrored beyond its edges, the edge pixel not repeated: at -1 lies pixel 1, and so on with a period of 2 length - 2;
/// a line of one pixel repeats it. Of floats, -0 comes before +0 and NaN after all numbers, whatever its sign and bits.
///
/// @param pSrc         device memory, the source pixel of the region's first pixel; steps are in bytes.
/// @param oSrcSize     the whole source image, whose pixel (0, 0) lies oSrcOffset before pSrc.
/// @param oSizeROI     pixels to write; the region lies inside the source image. pDst must not overlap the source.
/// @param oMaskSize    odd along both axes, else NPP_MASK_SIZE_ERROR; also beyond the image.
/// @param oAnchor      inside the mask.
/// @param pBuffer      device memory of the size asked for below; may be null when that is 0.
/// @param eBorderType  NPP_BORDER_MIRROR, else NPP_NOT_SUPPORTED_MODE_ERROR.
/// @return             queued work's status, with the first fault found among: null pointers, sizes, steps, alignment,
///                     region, mask, anchor, border, addresses outside live device memory, an even mask, the buffer.
#define ZEL_NPP_MEDIAN_FUNCTION(filter, suffix, Pixel) \
    ZEL_NPP_FUNCTION(filter##Border, suffix, Pixel, NppiSize oMaskSize, NppiPoint oAnchor, Npp8u* pBuffer)

/// nppiFilterMedianBorderGetBufferSize_*: bytes of work buffer that a call on such a region needs: none for masks of up
/// to 7 by 7 pixels, for others room for the region with what its masks reach around it.
///
/// @return  NPP_MEMORY_ALLOCATION_ERR when the bytes cannot be counted in 32 bits; else faults of the call's own kinds.
#define ZEL_NPP_MEDIAN_BUFFER_FUNCTION(filter, suffix, Pixel)                                                       \
    NppStatus nppi##filter##BorderGetBufferSize_##suffix##_C1R_Ctx(NppiSize oSizeROI, NppiSize oMaskSize,           \
                                                                   Npp32u* nBufferSize, NppiBorderType eBorderType, \
                                                                   NppStreamContext nppStreamCtx)

#define ZEL_NPP_DECLARE(...)                           \
    ZEL_HOST_API ZEL_NPP_MEDIAN_FUNCTION(__VA_ARGS__); \
    ZEL_HOST_API ZEL_NPP_MEDIAN_BUFFER_FUNCTION(__VA_ARGS__);
ZEL_NPP_MEDIAN_FILTERS(ZEL_NPP_DECLARE)
#undef ZEL_NPP_DECLARE
