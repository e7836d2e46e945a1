#pragma once

#include "host_runtime/export.h"
#include "nppdefs.h"

/// Mean over a rectangle: output pixel (x, y) is the mean of the source pixels x - anchor.x ...
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
ZEL_HOST_API NppStatus nppiFilterBoxBorder_8u_C1R_Ctx(const Npp8u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                      NppiPoint oSrcOffset, Npp8u* pDst, Npp32s nDstStep,
                                                      NppiSize oSizeROI, NppiSize oMaskSize, NppiPoint oAnchor,
                                                      NppiBorderType eBorderType, NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiFilterBoxBorder_16u_C1R_Ctx(const Npp16u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                       NppiPoint oSrcOffset, Npp16u* pDst, Npp32s nDstStep,
                                                       NppiSize oSizeROI, NppiSize oMaskSize, NppiPoint oAnchor,
                                                       NppiBorderType eBorderType, NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiFilterBoxBorder_16s_C1R_Ctx(const Npp16s* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                       NppiPoint oSrcOffset, Npp16s* pDst, Npp32s nDstStep,
                                                       NppiSize oSizeROI, NppiSize oMaskSize, NppiPoint oAnchor,
                                                       NppiBorderType eBorderType, NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiFilterBoxBorder_32f_C1R_Ctx(const Npp32f* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                       NppiPoint oSrcOffset, Npp32f* pDst, Npp32s nDstStep,
                                                       NppiSize oSizeROI, NppiSize oMaskSize, NppiPoint oAnchor,
                                                       NppiBorderType eBorderType, NppStreamContext nppStreamCtx);
