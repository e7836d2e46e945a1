#pragma once

#include "host_runtime/export.h"
#include "nppdefs.h"

// The table of the image filters, a line for each filter and pixel type. The line X(Erode, 8u, Npp8u) stands for
//   NppStatus nppiErodeBorder_8u_C1R_Ctx(const Npp8u* pSrc, ...)
// and its like. The vendor's headers make the declarations from it, src/Npp the definitions.

#define ZEL_NPP_BOX_FILTERS(X) \
    X(FilterBox, 8u, Npp8u)    \
    X(FilterBox, 16u, Npp16u)  \
    X(FilterBox, 16s, Npp16s)  \
    X(FilterBox, 32f, Npp32f)

#define ZEL_NPP_MEDIAN_FILTERS(X) \
    X(FilterMedian, 8u, Npp8u)    \
    X(FilterMedian, 16u, Npp16u)  \
    X(FilterMedian, 16s, Npp16s)  \
    X(FilterMedian, 32f, Npp32f)

#define ZEL_NPP_MORPHOLOGY_FILTERS(X) \
    X(Erode, 8u, Npp8u)               \
    X(Erode, 16u, Npp16u)             \
    X(Erode, 32f, Npp32f)             \
    X(Dilate, 8u, Npp8u)              \
    X(Dilate, 16u, Npp16u)            \
    X(Dilate, 32f, Npp32f)

/// The signature of nppi<name>_<suffix>_C1R_Ctx; what follows `Pixel` are parameters of its own.
#define ZEL_NPP_FUNCTION(name, suffix, Pixel, ...)                                                                 \
    NppStatus nppi##name##_##suffix##_C1R_Ctx(                                                                     \
        const Pixel* pSrc, Npp32s nSrcStep, NppiSize oSrcSize, NppiPoint oSrcOffset, Pixel* pDst, Npp32s nDstStep, \
        NppiSize oSizeROI, __VA_OPT__(__VA_ARGS__, ) NppiBorderType eBorderType, NppStreamContext nppStreamCtx)
