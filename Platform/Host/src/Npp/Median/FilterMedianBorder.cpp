#include <nppi_filtering_functions.h>

#include <algorithm>
#include <limits>

#include "Calls/VendorCall.h"
#include "Device/Allocations.h"
#include "Device/Streams.h"
#include "Npp/Median/FixedNetwork.h"
#include "Npp/Median/MedianByHistograms.h"
#include "Npp/Median/MedianByNetwork.h"
#include "Npp/Median/MedianByRanks.h"
#include "Npp/Median/MedianNetwork.h"
#include "host_runtime/Parallel.h"

namespace zel::host {
namespace {

bool isOdd(NppiSize mask) {
    return mask.width % 2 == 1 && mask.height % 2 == 1;
}

/// Whether the work buffer is used: for the source as far as the masks reach.
bool needsBuffer(NppiSize mask) {
    return mask.width > 7 || mask.height > 7;
}

/// Sets `bytes` to the work buffer's size for a region and an odd mask.
template <typename Pixel>
NppStatus findBufferBytes(NppiSize roi, NppiSize mask, Npp32u& bytes) {
    if (!needsBuffer(mask)) {
        bytes = 0;
        return NPP_SUCCESS;
    }
    constexpr std::uint64_t maxBytes = std::numeric_limits<Npp32u>::max();
    const std::uint64_t width = std::uint64_t(roi.width) + std::uint64_t(mask.width) - 1;
    const std::uint64_t height = std::uint64_t(roi.height) + std::uint64_t(mask.height) - 1;
    if (width > maxBytes / sizeof(Pixel) / height) return NPP_MEMORY_ALLOCATION_ERR;
    bytes = static_cast<Npp32u>(width * height * sizeof(Pixel));
    return NPP_SUCCESS;
}

template <typename Pixel>
void copyPixels(const MedianJob<Pixel>& job) {
    parallelFor(static_cast<std::size_t>(job.roi.height), 64, [&](std::size_t begin, std::size_t end) {
        for (auto y = static_cast<std::ptrdiff_t>(begin); y < static_cast<std::ptrdiff_t>(end); ++y)
            std::copy_n(job.srcRow(job.offset.y + y - job.anchor.y) + job.offset.x, job.roi.width, job.dstRow(y));
    });
}

/// Deals rows of tiles to the threads. What a thread reads beyond its own rows is a window.
template <typename Pixel, typename Run>
void runNetwork(const MedianJob<Pixel>& job, const NetworkLayout& layout, const Run& run) {
    const std::ptrdiff_t tileHeight = layout.tile.height;
    const std::ptrdiff_t tileRows = (job.roi.height + tileHeight - 1) / tileHeight;
    const std::ptrdiff_t grain = std::max<std::ptrdiff_t>(4 * job.mask.height / tileHeight, 16);
    parallelFor(
        static_cast<std::size_t>(tileRows), static_cast<std::size_t>(grain), [&](std::size_t begin, std::size_t end) {
            const auto top = static_cast<std::ptrdiff_t>(begin) * tileHeight;
            const auto bottom = static_cast<std::ptrdiff_t>(end) * tileHeight;
            MedianByNetwork<Pixel, Run>(job, layout, run).filter(top, std::min<std::ptrdiff_t>(bottom, job.roi.height));
        });
}

template <int side, int tileWidth, typename Pixel>
void filterByFixedNetwork(const MedianJob<Pixel>& job) {
    using Network = FixedNetwork<typename MedianOrder<Pixel>::Key, NppiSize{side, side}, NppiSize{tileWidth, 2}>;
    runNetwork(job, Network::layout, Network::run);
}

template <typename Pixel>
void filterByNetwork(const MedianJob<Pixel>& job) {
    using Key = typename MedianOrder<Pixel>::Key;
    const auto network = MedianNetwork::of(job.mask, job.roi.width, sizeof(Key));
    runNetwork(job, network->layout,
               [&](std::byte* memory, std::ptrdiff_t columns) { network->template run<Key>(memory, columns); });
}

template <typename Count>
void filterByHistograms(const MedianJob<Npp8u>& job) {
    const std::ptrdiff_t grain = std::max(4 * job.mask.height, 64);
    parallelFor(static_cast<std::size_t>(job.roi.height), static_cast<std::size_t>(grain),
                [&](std::size_t begin, std::size_t end) {
                    MedianByHistograms<Count>(job).filter(static_cast<std::ptrdiff_t>(begin),
                                                          static_cast<std::ptrdiff_t>(end));
                });
}

template <typename Count, typename Coordinate, typename Pixel>
void filterByRanks(const MedianJob<Pixel>& job, const RankTiles& across, const RankTiles& down) {
    parallelFor(static_cast<std::size_t>(across.count * down.count), 1, [&](std::size_t begin, std::size_t end) {
        MedianByRanks<Pixel, Count, Coordinate> tiles(job, across, down);
        for (auto i = static_cast<std::ptrdiff_t>(begin); i < static_cast<std::ptrdiff_t>(end); ++i)
            tiles.filterTile(i % across.count, i / across.count);
    });
}

/// The method whose cost does not depend on the mask.
template <typename Pixel>
void filterByCounting(const MedianJob<Pixel>& job) {
    const std::ptrdiff_t maskPixels = std::ptrdiff_t{job.mask.width} * job.mask.height;
    const bool isSmall = maskPixels <= std::numeric_limits<std::uint16_t>::max();
    if constexpr (sizeof(Pixel) == 1) {
        return isSmall ? filterByHistograms<std::uint16_t>(job) : filterByHistograms<std::uint32_t>(job);
    } else {
        const RankTiles across(job.roi.width, job.mask.width), down(job.roi.height, job.mask.height);
        const std::ptrdiff_t side = std::max(across.reached, down.reached);
        if (isSmall && side <= 256) return filterByRanks<std::uint16_t, std::uint8_t>(job, across, down);
        if (side <= 65536) return filterByRanks<std::uint32_t, std::uint16_t>(job, across, down);
        return filterByRanks<std::uint32_t, std::uint32_t>(job, across, down);
    }
}

template <typename Pixel>
void filterMedian(const MedianJob<Pixel>& job) {
    const auto [width, height] = job.mask;
    if (width == 1 && height == 1) return copyPixels(job);
    if (width == 3 && height == 3) return filterByFixedNetwork<3, 1>(job);
    if (width == 5 && height == 5) return filterByFixedNetwork<5, 2>(job);
    if (needsBuffer(job.mask)) {
        parallelFor(static_cast<std::size_t>(job.reachedHeight()), 64, [&](std::size_t begin, std::size_t end) {
            job.mirrorRows(static_cast<std::ptrdiff_t>(begin), static_cast<std::ptrdiff_t>(end));
        });
    }
    // From here on counting is faster. Measured, see Docs/median-filter.md.
    constexpr std::ptrdiff_t maxSide = sizeof(Pixel) == 1 ? 21 : sizeof(Pixel) == 2 ? 39 : 25;
    if (std::ptrdiff_t{width} * height <= maxSide * maxSide) return filterByNetwork(job);
    filterByCounting(job);
}

template <typename Pixel>
NppStatus filterMedianBorder(const char* name, const FilterArguments& arguments, Npp8u* buffer, cudaStream_t stream) {
    return vendorCall<CallFamily::npp>(name, [&] {
        if (const NppStatus status = checkFilterArguments(arguments, sizeof(Pixel), NPP_BORDER_MIRROR)) return status;
        if (!isOdd(arguments.mask)) return NPP_MASK_SIZE_ERROR;
        Npp32u bytes = 0;
        if (const NppStatus status = findBufferBytes<Pixel>(arguments.roi, arguments.mask, bytes)) return status;
        if (bytes != 0) {
            if (buffer == nullptr) return NPP_NULL_POINTER_ERROR;
            if (!isReachable(buffer, bytes)) return NPP_INVALID_DEVICE_POINTER_ERROR;
            if (reinterpret_cast<std::uintptr_t>(buffer) % sizeof(Pixel) != 0) return NPP_ALIGNMENT_ERROR;
        }
        enqueue(stream, [job = MedianJob<Pixel>(arguments, bytes == 0 ? nullptr : buffer)] { filterMedian(job); });
        return NPP_SUCCESS;
    });
}

template <typename Pixel>
NppStatus findMedianBufferSize(const char* name, NppiSize roi, NppiSize mask, Npp32u* bytes, NppiBorderType border) {
    return vendorCall<CallFamily::npp>(name, [&] {
        if (bytes == nullptr) return NPP_NULL_POINTER_ERROR;
        if (roi.width <= 0 || roi.height <= 0) return NPP_SIZE_ERROR;
        if (mask.width <= 0 || mask.height <= 0 || !isOdd(mask)) return NPP_MASK_SIZE_ERROR;
        if (border != NPP_BORDER_MIRROR) return NPP_NOT_SUPPORTED_MODE_ERROR;
        return findBufferBytes<Pixel>(roi, mask, *bytes);
    });
}

}  // namespace
}  // namespace zel::host

#define DEFINE(filter, suffix, Pixel)                                                                           \
    ZEL_NPP_MEDIAN_FUNCTION(filter, suffix, Pixel) {                                                            \
        return zel::host::filterMedianBorder<Pixel>(                                                            \
            __func__,                                                                                           \
            {pSrc, nSrcStep, oSrcSize, oSrcOffset, pDst, nDstStep, oSizeROI, oMaskSize, oAnchor, eBorderType},  \
            pBuffer, nppStreamCtx.hStream);                                                                     \
    }                                                                                                           \
    ZEL_NPP_MEDIAN_BUFFER_FUNCTION(filter, suffix, Pixel) {                                                     \
        static_cast<void>(nppStreamCtx);                                                                        \
        return zel::host::findMedianBufferSize<Pixel>(__func__, oSizeROI, oMaskSize, nBufferSize, eBorderType); \
    }
ZEL_NPP_MEDIAN_FILTERS(DEFINE)
