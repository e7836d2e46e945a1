#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>

#include "Npp/Box/Box.h"
#include "Npp/Box/ColumnSums.h"
#include "Npp/Box/FewRests.h"
#include "Npp/Box/FloatParts.h"
#include "Npp/Box/WideSum.h"
#include "Npp/Box/WindowSums.h"
#include "Npp/Common/WorkBuffer.h"

namespace zel::host {
namespace {

// The mean of a window is the exact sum of its pixels, rounded once to float and divided. The exponents of the pixels
// tell how to get there: in running sums of doubles, one or several for each window, or in integers of 384 bits. Which
// of them it was cannot be seen in a result.

constexpr std::ptrdiff_t stripColumns = 4096;
// Of pixels that take several sums: an outlier is best left in few columns, and more sums fit a cache for fewer.
constexpr std::ptrdiff_t blockRows = 64;
constexpr std::ptrdiff_t blockColumns = 512;

bool isFinite(float pixel) {
    return (std::bit_cast<std::uint32_t>(pixel) & 0x7F800000) != 0x7F800000;
}

/// Stores the values that belong before `end`.
void storeUpTo(const float* end, float* dst, Floats values) {
    if (end - dst >= static_cast<std::ptrdiff_t>(Vector<float>::lanes)) {
        std::memcpy(dst, &values, sizeof values);
    } else {
        const Floats last = values;  // which has an address, so that the others can stay in registers
        std::memcpy(dst, &last, static_cast<std::size_t>(end - dst) * sizeof(float));
    }
}

/// Columns [left, right) of output rows [begin, end): row by row as far as one running sum and few rests do, and else
/// in blocks whose means are all worked out alike.
class FloatStrip {
public:
    FloatStrip(const BoxJob<float>& job, std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t left,
               std::ptrdiff_t right)
        : job_(job),
          begin_(begin),
          end_(end),
          left_(left),
          width_(right - left),
          area_(static_cast<float>(job.area)),
          source_(job, job.windowX, left, right),
          rowSpreads_(job, source_, begin, end) {}

    void filter() {
        const std::ptrdiff_t rows = std::max(blockRows, 4 * job_.windowY.size);
        for (std::ptrdiff_t y = begin_; y < end_;) {
            const std::ptrdiff_t top = y;
            y = filterWithFewRests(top);
            if (y != top) continue;
            y = std::min(top + rows, end_);
            filterBlock({top, y});
        }
    }

private:
    static constexpr std::ptrdiff_t lanes = Vector<double>::lanes;  // and of counts

    struct Rows {
        std::ptrdiff_t top;
        std::ptrdiff_t bottom;
    };

    /// The usual case: one running sum, and beside it what it cannot hold of few pixels.
    /// @returns  the first row from `top` on that it does not suffice for.
    std::ptrdiff_t filterWithFewRests(std::ptrdiff_t top) {
        // Units that suit some rows ahead: sums start anew in other ones.
        const FloatUnits units(rowSpreads_.under(top, std::min(top + job_.windowY.size, end_)), job_.area);
        const FloatParts<2> of(units);
        FewRests rests(job_, source_, rowSpreads_, units, width_);
        const auto whole = [](float pixel) { return std::array<double, 1>{pixel}; };
        const auto withoutRest = [=](float pixel) { return std::array{of.split(pixel)[0]}; };
        WindowSums<float, double, 1> sums(job_, source_);
        std::ptrdiff_t y = top;
        for (; y < end_ && rests.goTo(y); ++y) {
            float* const dst = job_.dstRow(y) + left_;
            const auto store = [&](std::ptrdiff_t x, Doubles low, Doubles high) {
                storeUpTo(dst + width_, dst + x, roundedToFloat(low, high) / area_);
            };
            auto row = rests.haveChanged() ? sums.under(y, withoutRest) : sums.under(y, whole);
            if (!rests.areUnderAny()) {
                row.forEachTwo(width_,
                               [&](std::ptrdiff_t x, const auto& low, const auto& high) { store(x, low[0], high[0]); });
                continue;
            }
            row.forEachTwo(width_, [&](std::ptrdiff_t x, const auto& low, const auto& high) {
                if (!rests.areUnder(x)) return store(x, low[0], high[0]);
                store(x, addToOdd(low[0], rests.sumsUnder(x)), addToOdd(high[0], rests.sumsUnder(x + lanes)));
            });
        }
        return y;
    }

    void filterBlock(const Rows& rows) {
        const FloatSpread spread = rowSpreads_.under(rows.top, rows.bottom);
        const FloatUnits units(spread, job_.area);
        const std::ptrdiff_t columns = std::max(blockColumns, 4 * job_.windowX.size);
        if (width_ > columns) {
            for (std::ptrdiff_t x = 0; x < width_; x += columns) {
                FloatStrip(job_, rows.top, rows.bottom, left_ + x, left_ + std::min(x + columns, width_)).filter();
            }
        } else if (spread.allFinite()) {
            filterRows(rows, units, [](float pixel) { return pixel; });
        } else {
            filterRows(rows, units, [](float pixel) { return isFinite(pixel) ? pixel : 0.0f; });
            markWindowsWithoutSum(rows);
        }
    }

    /// @param clean  takes infinities and NaN out of the block's pixels.
    template <typename Clean>
    void filterRows(const Rows& rows, const FloatUnits& units, const Clean& clean) {
        if (units.parts() == 1) {
            filterInParts<1>(rows, units, clean);
        } else if (units.parts() == 2) {
            filterInParts<2>(rows, units, clean);
        } else if (units.parts() <= 4) {
            filterInParts<4>(rows, units, clean);
        } else if (units.parts() <= FloatUnits::maxParts) {
            filterInParts<FloatUnits::maxParts>(rows, units, clean);
        } else {
            filterInIntegers(rows, clean);
        }
    }

    template <std::size_t parts, typename Clean>
    void filterInParts(const Rows& rows, const FloatUnits& units, const Clean& clean) {
        const FloatParts<parts> of(units);
        const auto split = [=](float pixel) { return of.split(clean(pixel)); };
        WindowSums<float, double, parts> sums(job_, source_);
        for (std::ptrdiff_t y = rows.top; y < rows.bottom; ++y) {
            float* const dst = job_.dstRow(y) + left_;
            sums.under(y, split).forEachTwo(width_, [&](std::ptrdiff_t x, const auto& low, const auto& high) {
                storeUpTo(dst + width_, dst + x, roundedToFloat(of.sum(low), of.sum(high)) / area_);
            });
        }
    }

    template <typename Clean>
    void filterInIntegers(const Rows& rows, const Clean& clean) {
        const std::ptrdiff_t size = job_.windowX.size;
        const auto split = [=](float pixel) { return std::array{WideSum(clean(pixel))}; };
        WorkBuffer buffer(WorkBuffer::bytesFor<WideSum>(static_cast<std::size_t>(source_.padded())));
        WideSum* const columns = buffer.take<WideSum>(static_cast<std::size_t>(source_.padded()));
        RunningColumns<float, WideSum, 1> running(job_, source_, {columns});
        for (std::ptrdiff_t y = rows.top; y < rows.bottom; ++y) {
            running.goTo(y, split);
            float* const dst = job_.dstRow(y) + left_;
            auto sum = repeatedColumns<WideSum>(job_.windowX, columns, source_.padded());
            for (std::ptrdiff_t x = 0; x < size; ++x) sum = sum + columns[x];
            dst[0] = static_cast<float>(sum) / area_;
            for (std::ptrdiff_t x = 1; x < width_; ++x) {
                sum = sum + columns[x + size - 1] - columns[x - 1];
                dst[x] = static_cast<float>(sum) / area_;
            }
        }
    }

    /// What plain addition gives where infinities or NaN are in a window, in place of the mean of its finite pixels.
    void markWindowsWithoutSum(const Rows& rows) {
        using Count = std::uint64_t;
        // NaN counts as infinities of both signs, whose sum it is.
        const auto split = [](float pixel) {
            const Count counts = isFinite(pixel) ? 0 : 1;
            return std::array{pixel < 0 ? 0 : counts, pixel > 0 ? 0 : counts};
        };
        constexpr float infinity = std::numeric_limits<float>::infinity();
        WindowSums<float, Count, 2> counts(job_, source_);
        for (std::ptrdiff_t y = rows.top; y < rows.bottom; ++y) {
            float* const dst = job_.dstRow(y) + left_;
            const auto mark = [&](std::ptrdiff_t first, const auto& infinities) {
                const auto& [rising, falling] = infinities;
                for (std::ptrdiff_t i = 0; i < std::min(lanes, width_ - first); ++i) {
                    if (rising[i] == 0 && falling[i] == 0) continue;
                    const float up = falling[i] == 0 ? infinity : std::numeric_limits<float>::quiet_NaN();
                    dst[first + i] = rising[i] == 0 ? -infinity : up;
                }
            };
            counts.under(y, split).forEachTwo(width_, [&](std::ptrdiff_t x, const auto& low, const auto& high) {
                mark(x, low);
                mark(x + lanes, high);
            });
        }
    }

    const BoxJob<float>& job_;
    std::ptrdiff_t begin_;
    std::ptrdiff_t end_;
    std::ptrdiff_t left_;
    std::ptrdiff_t width_;
    float area_;
    SourceColumns source_;
    RowSpreads rowSpreads_;
};

}  // namespace

void filterBoxRows(const BoxJob<Npp32f>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    const std::ptrdiff_t columns = std::max(stripColumns, 4 * job.windowX.size);
    for (std::ptrdiff_t left = 0; left < job.roi.width; left += columns) {
        FloatStrip(job, begin, end, left, std::min<std::ptrdiff_t>(left + columns, job.roi.width)).filter();
    }
}

}  // namespace zel::host
