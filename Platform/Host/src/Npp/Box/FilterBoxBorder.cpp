#include <nppi_filtering_functions.h>

#include "Calls/VendorCall.h"
#include "Device/Streams.h"
#include "Npp/Box/Box.h"
#include "host_runtime/Parallel.h"

namespace zel::host {
namespace {

/// Rows that one thread takes at a time: their first window costs about as much as half the window's rows.
template <typename T>
std::size_t rowGrain(const BoxJob<T>& job) {
    constexpr std::ptrdiff_t pixels = 1 << 16;
    return static_cast<std::size_t>(std::max(pixels / job.roi.width + 1, 4 * job.windowY.size));
}

template <typename T>
NppStatus filterBoxBorder(const char* name, const FilterArguments& arguments, cudaStream_t stream) {
    return vendorCall<CallFamily::npp>(name, [&] {
        const NppStatus status = checkFilterArguments(arguments, sizeof(T), NPP_BORDER_REPLICATE);
        if (status != NPP_SUCCESS) return status;
        enqueue(stream, [job = BoxJob<T>(arguments)] {
            parallelFor(static_cast<std::size_t>(job.roi.height), rowGrain(job), [&](auto begin, auto end) {
                filterBoxRows(job, static_cast<std::ptrdiff_t>(begin), static_cast<std::ptrdiff_t>(end));
            });
        });
        return NPP_SUCCESS;
    });
}

}  // namespace
}  // namespace zel::host

NppStatus nppiFilterBoxBorder_8u_C1R_Ctx(const Npp8u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize, NppiPoint oSrcOffset,
                                         Npp8u* pDst, Npp32s nDstStep, NppiSize oSizeROI, NppiSize oMaskSize,
                                         NppiPoint oAnchor, NppiBorderType eBorderType, NppStreamContext nppStreamCtx) {
    return zel::host::filterBoxBorder<Npp8u>(
        __func__, {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, oMaskSize, oAnchor, eBorderType},
        nppStreamCtx.hStream);
}

NppStatus nppiFilterBoxBorder_16u_C1R_Ctx(const Npp16u* pSrc, Npp32s nSrcStep, NppiSize oSrcSize, NppiPoint oSrcOffset,
                                          Npp16u* pDst, Npp32s nDstStep, NppiSize oSizeROI, NppiSize oMaskSize,
                                          NppiPoint oAnchor, NppiBorderType eBorderType,
                                          NppStreamContext nppStreamCtx) {
    return zel::host::filterBoxBorder<Npp16u>(
        __func__, {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, oMaskSize, oAnchor, eBorderType},
        nppStreamCtx.hStream);
}

NppStatus nppiFilterBoxBorder_16s_C1R_Ctx(const Npp16s* pSrc, Npp32s nSrcStep, NppiSize oSrcSize, NppiPoint oSrcOffset,
                                          Npp16s* pDst, Npp32s nDstStep, NppiSize oSizeROI, NppiSize oMaskSize,
                                          NppiPoint oAnchor, NppiBorderType eBorderType,
                                          NppStreamContext nppStreamCtx) {
    return zel::host::filterBoxBorder<Npp16s>(
        __func__, {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, oMaskSize, oAnchor, eBorderType},
        nppStreamCtx.hStream);
}

NppStatus nppiFilterBoxBorder_32f_C1R_Ctx(const Npp32f* pSrc, Npp32s nSrcStep, NppiSize oSrcSize, NppiPoint oSrcOffset,
                                          Npp32f* pDst, Npp32s nDstStep, NppiSize oSizeROI, NppiSize oMaskSize,
                                          NppiPoint oAnchor, NppiBorderType eBorderType,
                                          NppStreamContext nppStreamCtx) {
    return zel::host::filterBoxBorder<Npp32f>(
        __func__, {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, oMaskSize, oAnchor, eBorderType},
        nppStreamCtx.hStream);
}
