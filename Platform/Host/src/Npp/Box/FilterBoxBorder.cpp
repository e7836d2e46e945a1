#include <nppi_filtering_functions.h>

#include "Calls/VendorCall.h"
#include "Device/Streams.h"
#include "Npp/Box/Box.h"
#include "Npp/Common/DealRows.h"

namespace zel::host {
namespace {

template <typename T>
NppStatus filterBoxBorder(const char* name, const FilterArguments& arguments, cudaStream_t stream) {
    return vendorCall<CallFamily::npp>(name, [&] {
        const NppStatus status = checkFilterArguments(arguments, sizeof(T), NPP_BORDER_REPLICATE);
        if (status != NPP_SUCCESS) return status;
        enqueue(stream, [job = BoxJob<T>(arguments)] {
            dealRows(job, job.windowY.size, [&](auto begin, auto end) { filterBoxRows(job, begin, end); });
        });
        return NPP_SUCCESS;
    });
}

}  // namespace
}  // namespace zel::host

#define DEFINE(filter, suffix, Pixel)                                                                          \
    ZEL_NPP_BOX_FUNCTION(filter, suffix, Pixel) {                                                              \
        return zel::host::filterBoxBorder<Pixel>(                                                              \
            __func__,                                                                                          \
            {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, oMaskSize, oAnchor, eBorderType}, \
            nppStreamCtx.hStream);                                                                             \
    }
ZEL_NPP_BOX_FILTERS(DEFINE)
