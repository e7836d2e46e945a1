#include <nppi_morphological_operations.h>

#include <memory>

#include "Calls/VendorCall.h"
#include "Device/Streams.h"
#include "Npp/Common/DealRows.h"
#include "Npp/Common/PixelOrder.h"
#include "Npp/Morphology/Morphology3x3.h"
#include "Npp/Morphology/MorphologyRectangle.h"
#include "Npp/Morphology/MorphologyRuns.h"
#include "Npp/Morphology/PassChain.h"

namespace zel::host {
namespace {

template <typename Pixel>
using Erode = PixelOrder<Pixel, false>;
template <typename Pixel>
using Dilate = PixelOrder<Pixel, true>;

constexpr NppiSize square3x3{3, 3};
constexpr NppiPoint centre3x3{1, 1};
constexpr MaskWindow window3{1, 3};

template <typename Order>
void runMask(const FilterJob<typename Order::Pixel>& job, const StructuringElement& element) {
    if (const auto small = element.as3x3()) return filter3x3<Order>(job, *small);
    const std::ptrdiff_t height = element.windowY().size;
    if (element.isRectangle()) {
        return dealRows(job, height, [&](auto begin, auto end) {
            RectangleTiles<Order>(job, element, end - begin).filter(begin, end);
        });
    }
    const RunsInOrder runs(element);
    dealRows(job, height,
             [&](auto begin, auto end) { RunTiles<Order>(job, element, runs, end - begin).filter(begin, end); });
}

/// Queues a pass, or holds it back if it may be one of a chain.
template <typename Order>
void submit3x3(const FilterJob<typename Order::Pixel>& job, Element3x3 element, cudaStream_t stream) {
    if (PassChain<Order>::takes(job)) return holdWork(stream, std::make_unique<PassChain<Order>>(job, element));
    runHeldWork();
    enqueue(stream, [job, element] { filter3x3<Order>(job, element); });
}

/// A call that is not in order runs held work, as all calls do but those that go on with it.
template <typename Body>
NppStatus morphologyCall(const char* name, const Body& body) {
    return vendorCall<CallFamily::npp>(
        name,
        [&] {
            const NppStatus status = body();
            if (status != NPP_SUCCESS) runHeldWork();
            return status;
        },
        HeldWorkUse::extend);
}

template <typename Order>
NppStatus filterSquare(const char* name, const FilterArguments& arguments, cudaStream_t stream) {
    using Pixel = typename Order::Pixel;
    return morphologyCall(name, [&] {
        const NppStatus status = checkFilterArguments(arguments, sizeof(Pixel), NPP_BORDER_REPLICATE);
        if (status == NPP_SUCCESS) submit3x3<Order>(FilterJob<Pixel>(arguments), Element3x3::square, stream);
        return status;
    });
}

template <typename Order>
NppStatus filterMask(const char* name, const FilterArguments& arguments, const Npp8u* mask, cudaStream_t stream) {
    using Pixel = typename Order::Pixel;
    return morphologyCall(name, [&] {
        if (mask == nullptr) return NPP_NULL_POINTER_ERROR;
        const NppStatus status = checkFilterArguments(arguments, sizeof(Pixel), NPP_BORDER_REPLICATE);
        if (status != NPP_SUCCESS) return status;
        const NppiSize size = arguments.mask;
        const auto bytes = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
        if (!isReachable(mask, bytes)) return NPP_INVALID_DEVICE_POINTER_ERROR;
        const FilterJob<Pixel> job(arguments);
        // What is held is known only once the mask has been read, which other work may have to write first.
        if (bytes == 9 && PassChain<Order>::takes(job)) {
            runHeldWorkThatWrites(mask, bytes);
            if (const auto small = StructuringElement(mask, size, arguments.anchor, job.size).as3x3()) {
                submit3x3<Order>(job, *small, stream);
                return NPP_SUCCESS;
            }
        }
        runHeldWork();
        enqueue(stream, [=, anchor = arguments.anchor] {
            runMask<Order>(job, StructuringElement(mask, size, anchor, job.size));
        });
        return NPP_SUCCESS;
    });
}

}  // namespace
}  // namespace zel::host

#define DEFINE(filter, suffix, Pixel)                                                                                 \
    ZEL_NPP_SQUARE_FUNCTION(filter, suffix, Pixel) {                                                                  \
        return zel::host::filterSquare<zel::host::filter<Pixel>>(                                                     \
            __func__,                                                                                                 \
            {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, zel::host::square3x3,                    \
             zel::host::centre3x3, eBorderType},                                                                      \
            nppStreamCtx.hStream);                                                                                    \
    }                                                                                                                 \
    ZEL_NPP_MASK_FUNCTION(filter, suffix, Pixel) {                                                                    \
        return zel::host::filterMask<zel::host::filter<Pixel>>(                                                       \
            __func__,                                                                                                 \
            {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, oMaskSize, oAnchor, eBorderType}, pMask, \
            nppStreamCtx.hStream);                                                                                    \
    }
ZEL_NPP_MORPHOLOGY_FILTERS(DEFINE)
