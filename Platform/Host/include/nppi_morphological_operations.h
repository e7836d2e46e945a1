#pragma once

#include "host_runtime/export.h"
#include "nppdefs.h"

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

/// By the square of 3 by 3 pixels around the output pixel.
ZEL_HOST_API NppStatus nppiErode3x3Border_8u_C1R_Ctx(const Npp8u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                     NppiPoint oSrcOffset, Npp8u* pDst, Npp32s nDstStep,
                                                     NppiSize oSizeROI, NppiBorderType eBorderType,
                                                     NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiErode3x3Border_16u_C1R_Ctx(const Npp16u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                      NppiPoint oSrcOffset, Npp16u* pDst, Npp32s nDstStep,
                                                      NppiSize oSizeROI, NppiBorderType eBorderType,
                                                      NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiErode3x3Border_32f_C1R_Ctx(const Npp32f* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                      NppiPoint oSrcOffset, Npp32f* pDst, Npp32s nDstStep,
                                                      NppiSize oSizeROI, NppiBorderType eBorderType,
                                                      NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiDilate3x3Border_8u_C1R_Ctx(const Npp8u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                      NppiPoint oSrcOffset, Npp8u* pDst, Npp32s nDstStep,
                                                      NppiSize oSizeROI, NppiBorderType eBorderType,
                                                      NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiDilate3x3Border_16u_C1R_Ctx(const Npp16u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                       NppiPoint oSrcOffset, Npp16u* pDst, Npp32s nDstStep,
                                                       NppiSize oSizeROI, NppiBorderType eBorderType,
                                                       NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiDilate3x3Border_32f_C1R_Ctx(const Npp32f* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                       NppiPoint oSrcOffset, Npp32f* pDst, Npp32s nDstStep,
                                                       NppiSize oSizeROI, NppiBorderType eBorderType,
                                                       NppStreamContext nppStreamCtx);

/// By any mask. One of zeros, which the call cannot see, selects nothing: erosion then gives the type's largest
/// integer, dilation its smallest.
///
/// @param pMask        device memory, oMaskSize.height rows of oMaskSize.width bytes without padding; read when the
///                     work's turn comes in the stream.
/// @param oMaskSize    any size of at least 1, also beyond the image.
/// @param oAnchor      inside the mask.
ZEL_HOST_API NppStatus nppiErodeBorder_8u_C1R_Ctx(const Npp8u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                  NppiPoint oSrcOffset, Npp8u* pDst, Npp32s nDstStep, NppiSize oSizeROI,
                                                  const Npp8u* pMask, NppiSize oMaskSize, NppiPoint oAnchor,
                                                  NppiBorderType eBorderType, NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiErodeBorder_16u_C1R_Ctx(const Npp16u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                   NppiPoint oSrcOffset, Npp16u* pDst, Npp32s nDstStep,
                                                   NppiSize oSizeROI, const Npp8u* pMask, NppiSize oMaskSize,
                                                   NppiPoint oAnchor, NppiBorderType eBorderType,
                                                   NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiErodeBorder_32f_C1R_Ctx(const Npp32f* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                   NppiPoint oSrcOffset, Npp32f* pDst, Npp32s nDstStep,
                                                   NppiSize oSizeROI, const Npp8u* pMask, NppiSize oMaskSize,
                                                   NppiPoint oAnchor, NppiBorderType eBorderType,
                                                   NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiDilateBorder_8u_C1R_Ctx(const Npp8u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                   NppiPoint oSrcOffset, Npp8u* pDst, Npp32s nDstStep,
                                                   NppiSize oSizeROI, const Npp8u* pMask, NppiSize oMaskSize,
                                                   NppiPoint oAnchor, NppiBorderType eBorderType,
                                                   NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiDilateBorder_16u_C1R_Ctx(const Npp16u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                    NppiPoint oSrcOffset, Npp16u* pDst, Npp32s nDstStep,
                                                    NppiSize oSizeROI, const Npp8u* pMask, NppiSize oMaskSize,
                                                    NppiPoint oAnchor, NppiBorderType eBorderType,
                                                    NppStreamContext nppStreamCtx);
ZEL_HOST_API NppStatus nppiDilateBorder_32f_C1R_Ctx(const Npp32f* pSrc, Npp32s nSrcStep, NppiSize oSrcSize,
                                                    NppiPoint oSrcOffset, Npp32f* pDst, Npp32s nDstStep,
                                                    NppiSize oSizeROI, const Npp8u* pMask, NppiSize oMaskSize,
                                                    NppiPoint oAnchor, NppiBorderType eBorderType,
                                                    NppStreamContext nppStreamCtx);
