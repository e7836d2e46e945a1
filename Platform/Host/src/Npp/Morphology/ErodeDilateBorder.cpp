#include <nppi_morphological_operations.h>

#include "Calls/VendorCall.h"
#include "Device/Streams.h"
#include "Npp/Common/PixelOrder.h"
#include "Npp/Morphology/Morphology3x3.h"
#include "Npp/Morphology/MorphologyRectangle.h"
#include "Npp/Morphology/MorphologyRuns.h"
#include "host_runtime/Parallel.h"

namespace zel::host {
namespace {

template <typename Pixel>
using Erode = PixelOrder<Pixel, false>;
template <typename Pixel>
using Dilate = PixelOrder<Pixel, true>;

constexpr NppiSize square3x3{3, 3};
constexpr NppiPoint centre3x3{1, 1};
constexpr MaskWindow window3{1, 3};

/// Deals the output rows to the threads: filterRows(begin, end). What a thread reads beyond its own rows is a window.
template <typename T, typename FilterRows>
void dealRows(const FilterJob<T>& job, std::ptrdiff_t windowHeight, const FilterRows& filterRows) {
    constexpr std::ptrdiff_t pixels = 1 << 16;
    const std::ptrdiff_t grain = std::max(pixels / job.roi.width + 1, 4 * windowHeight);
    parallelFor(static_cast<std::size_t>(job.roi.height), static_cast<std::size_t>(grain),
                [&](std::size_t begin, std::size_t end) {
                    filterRows(static_cast<std::ptrdiff_t>(begin), static_cast<std::ptrdiff_t>(end));
                });
}

template <typename Order>
void runSquare(const FilterJob<typename Order::Pixel>& job) {
    dealRows(job, window3.size, [&](auto begin, auto end) { filterSquareRows<Order>(job, begin, end); });
}

template <typename Order>
void runMask(const FilterJob<typename Order::Pixel>& job, const StructuringElement& element) {
    const std::ptrdiff_t height = element.windowY().size;
    if (element.isCross3x3()) {
        return dealRows(job, height, [&](auto begin, auto end) { filterCrossRows<Order>(job, begin, end); });
    }
    if (element.isRectangle()) {
        if (element.windowX() == window3 && element.windowY() == window3) return runSquare<Order>(job);
        return dealRows(job, height, [&](auto begin, auto end) {
            RectangleTiles<Order>(job, element, end - begin).filter(begin, end);
        });
    }
    const RunsInOrder runs(element);
    dealRows(job, height,
             [&](auto begin, auto end) { RunTiles<Order>(job, element, runs, end - begin).filter(begin, end); });
}

template <typename Order>
NppStatus filterSquare(const char* name, const FilterArguments& arguments, cudaStream_t stream) {
    using Pixel = typename Order::Pixel;
    return vendorCall<CallFamily::npp>(name, [&] {
        const NppStatus status = checkFilterArguments(arguments, sizeof(Pixel), NPP_BORDER_REPLICATE);
        if (status != NPP_SUCCESS) return status;
        enqueue(stream, [job = FilterJob<Pixel>(arguments)] { runSquare<Order>(job); });
        return NPP_SUCCESS;
    });
}

template <typename Order>
NppStatus filterMask(const char* name, const FilterArguments& arguments, const Npp8u* mask, cudaStream_t stream) {
    using Pixel = typename Order::Pixel;
    return vendorCall<CallFamily::npp>(name, [&] {
        if (mask == nullptr) return NPP_NULL_POINTER_ERROR;
        const NppStatus status = checkFilterArguments(arguments, sizeof(Pixel), NPP_BORDER_REPLICATE);
        if (status != NPP_SUCCESS) return status;
        const NppiSize size = arguments.mask;
        if (!isDeviceRange(mask, static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height))) {
            return NPP_INVALID_DEVICE_POINTER_ERROR;
        }
        enqueue(stream, [job = FilterJob<Pixel>(arguments), mask, size, anchor = arguments.anchor] {
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
