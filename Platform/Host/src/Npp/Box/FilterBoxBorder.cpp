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

#define DEFINE(filter, suffix, Pixel)                                                                          \
    ZEL_NPP_BOX_FUNCTION(filter, suffix, Pixel) {                                                              \
        return zel::host::filterBoxBorder<Pixel>(                                                              \
            __func__,                                                                                          \
            {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, oMaskSize, oAnchor, eBorderType}, \
            nppStreamCtx.hStream);                                                                             \
    }
ZEL_NPP_BOX_FILTERS(DEFINE)
