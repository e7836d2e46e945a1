#include "Npp/Box/Box.h"
#include "Npp/Box/BoxDivision.h"
#include "Npp/Box/ColumnSums.h"
#include "Npp/Box/PrefixSum.h"
#include "Npp/Common/WorkBuffer.h"

namespace zel::host {
namespace {

constexpr std::ptrdiff_t stripWidth = 2048;

// All sums are taken modulo a power of two above the largest window sum, so that sliding and prefix sums may wrap on
// the way and the result is exact.

/// Output pixel x from the prefix sums of its row; sums[-1] is 0.
template <typename Sum, typename Division, typename Pixel>
void divideRow(const Sum* sums, std::ptrdiff_t windowSize, Sum repeated, const Division& division, Pixel* dst,
               std::ptrdiff_t count) {
    const Sum* const before = sums - 1;
    const Sum* const last = before + windowSize;
#pragma omp simd
    for (std::ptrdiff_t x = 0; x < count; ++x) {
        dst[x] = division.template divide<Pixel>(static_cast<Sum>(last[x] - before[x] + repeated));
    }
}

template <typename Column, typename Sum, typename Division, typename Pixel>
void filterStrip(const BoxJob<Pixel>& job, std::ptrdiff_t top, std::ptrdiff_t bottom, std::ptrdiff_t left,
                 std::ptrdiff_t right) {
    const Division division(job.area);
    const SourceColumns source(job, job.windowX, left, right);
    const auto padded = static_cast<std::size_t>(source.padded());
    constexpr std::size_t lead = WorkBuffer::alignment / sizeof(Sum);
    WorkBuffer buffer(WorkBuffer::bytesFor<Column>(padded) + WorkBuffer::bytesFor<Sum>(lead + padded));
    Column* const columns = buffer.take<Column>(padded);
    Sum* const sums = buffer.take<Sum>(lead + padded) + lead;
    sums[-1] = 0;
    const auto split = [](Pixel pixel) { return std::array{static_cast<Column>(pixel)}; };
    RunningColumns<Pixel, Column, 1> running(job, source, {columns});
    for (std::ptrdiff_t y = top; y < bottom; ++y) {
        running.goTo(y, split);
        prefixSum(columns, sums, padded);
        const Sum repeated = repeatedColumns<Sum>(job.windowX, columns, source.padded());
        divideRow(sums, job.windowX.size, repeated, division, job.dstRow(y) + left, right - left);
    }
}

/// Strips keep a row's sums in the first-level cache.
template <typename Column, typename Sum, typename Division, typename Pixel>
void filterRows(const BoxJob<Pixel>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    const std::ptrdiff_t width = std::max<std::ptrdiff_t>(stripWidth, 4 * job.windowX.size);
    for (std::ptrdiff_t left = 0; left < job.roi.width; left += width) {
        const std::ptrdiff_t right = std::min<std::ptrdiff_t>(left + width, job.roi.width);
        filterStrip<Column, Sum, Division>(job, begin, end, left, right);
    }
}

template <typename Pixel>
void filterRowsLong(const BoxJob<Pixel>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    constexpr std::uint64_t maxMagnitude = std::uint64_t{1} << (std::is_signed_v<Pixel> ? 16 : 8 * sizeof(Pixel));
    if (job.area <= (std::uint64_t{1} << 32) / maxMagnitude) {
        filterRows<std::uint32_t, std::uint32_t, DoubleDivision>(job, begin, end);
    } else if (job.area <= DoubleDivision::maxArea) {
        filterRows<std::uint64_t, std::uint64_t, DoubleDivision>(job, begin, end);
    } else {
        filterRows<Unsigned128, Unsigned128, WideDivision>(job, begin, end);
    }
}

}  // namespace

void filterBoxRows(const BoxJob<Npp8u>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    constexpr std::uint64_t maxShortCount = 0xFFFF / 0xFF;  // pixels whose sum fits 16 bits
    if (job.area <= maxShortCount) {
        filterRows<std::uint16_t, std::uint16_t, ShortDivision>(job, begin, end);
    } else if (job.maskHeight <= maxShortCount && job.area <= FloatDivision::maxArea) {
        filterRows<std::uint16_t, std::uint32_t, FloatDivision>(job, begin, end);
    } else {
        filterRowsLong(job, begin, end);
    }
}

void filterBoxRows(const BoxJob<Npp16u>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    filterRowsLong(job, begin, end);
}

void filterBoxRows(const BoxJob<Npp16s>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    filterRowsLong(job, begin, end);
}

}  // namespace zel::host
