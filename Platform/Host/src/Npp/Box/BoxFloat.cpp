#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>

#include "Npp/Box/Box.h"
#include "Npp/Box/ColumnSums.h"
#include "Npp/Box/FewRests.h"
#include "Npp/Box/FloatParts.h"
#include "Npp/Box/SlidingSums.h"
#include "Npp/Box/WideSum.h"
#include "Npp/Common/WorkBuffer.h"

namespace zel::host {
namespace {

// The mean of a window is the exact sum of its pixels, rounded once to float and divided. The exponents in a block of
// pixels tell how to get there: in running sums of doubles, one or several for each window, or in integers of 384 bits.
// Which of them it was cannot be seen in a result.

constexpr std::ptrdiff_t blockRows = 64;
constexpr std::ptrdiff_t blockColumns = 4096;
// Of pixels that take more than one sum: an outlier is best left in few columns, and more sums fit a cache for fewer.
constexpr std::ptrdiff_t hardBlockColumns = 512;

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

/// Columns [left, right) of output rows [begin, end), in blocks of rows: all means of a block are worked out alike.
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
        for (std::ptrdiff_t top = begin_; top < end_; top += rows) filterBlock({top, std::min(top + rows, end_)});
    }

private:
    struct Rows {
        std::ptrdiff_t top;
        std::ptrdiff_t bottom;
    };

    void filterBlock(const Rows& rows) {
        const FloatSpread spread = rowSpreads_.under(rows.top, rows.bottom);
        const FloatUnits units(spread, job_.area);
        if (units.parts() == 2 && spread.allFinite() && filterWithFewRests(rows, units)) return;
        const std::ptrdiff_t columns = std::max(hardBlockColumns, 4 * job_.windowX.size);
        if ((units.parts() > 1 || !spread.allFinite()) && width_ > columns) {
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
        forEachRow<double, parts>(rows, split, [&](std::ptrdiff_t y, SlidingSums<double, parts> sums) {
            float* const dst = job_.dstRow(y) + left_;
            sums.forEachTwo(width_, [&](std::ptrdiff_t x, const auto& low, const auto& high) {
                storeUpTo(dst + width_, dst + x, roundedToFloat(of.sum(low), of.sum(high)) / area_);
            });
        });
    }

    /// One part in running sums, and what is left of a few pixels beside them. @returns  whether they are so few.
    bool filterWithFewRests(const Rows& rows, const FloatUnits& units) {
        const FloatParts<2> of(units);
        FewRests rests(job_, source_, width_);
        if (!rests.find(of, units.unit(0), rowSpreads_, rows.top, rows.bottom)) return false;
        const auto split = [=](float pixel) { return std::array{of.split(pixel)[0]}; };
        forEachRow<double, 1>(rows, split, [&](std::ptrdiff_t y, SlidingSums<double, 1> sums) {
            float* const dst = job_.dstRow(y) + left_;
            rests.goTo(y);
            sums.forEachTwo(width_, [&](std::ptrdiff_t x, const auto& low, const auto& high) {
                Doubles lowSums = low[0], highSums = high[0];
                if (rests.areUnder(x)) {
                    lowSums = addToOdd(lowSums, rests.sumsUnder(x));
                    highSums = addToOdd(highSums, rests.sumsUnder(x + sums.lanes));
                }
                storeUpTo(dst + width_, dst + x, roundedToFloat(lowSums, highSums) / area_);
            });
        });
        return true;
    }

    template <typename Clean>
    void filterInIntegers(const Rows& rows, const Clean& clean) {
        const std::ptrdiff_t size = job_.windowX.size;
        const auto split = [=](float pixel) { return std::array{WideSum(clean(pixel))}; };
        WorkBuffer buffer(WorkBuffer::bytesFor<WideSum>(static_cast<std::size_t>(source_.padded())));
        WideSum* const columns = buffer.take<WideSum>(static_cast<std::size_t>(source_.padded()));
        const RunningColumns<float, WideSum, 1> running(job_, source_, {columns});
        running.forEachRow(rows.top, rows.bottom, split, [&](std::ptrdiff_t y) {
            float* const dst = job_.dstRow(y) + left_;
            auto sum = repeatedColumns<WideSum>(job_.windowX, columns, source_.padded());
            for (std::ptrdiff_t x = 0; x < size; ++x) sum = sum + columns[x];
            dst[0] = static_cast<float>(sum) / area_;
            for (std::ptrdiff_t x = 1; x < width_; ++x) {
                sum = sum + columns[x + size - 1] - columns[x - 1];
                dst[x] = static_cast<float>(sum) / area_;
            }
        });
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
        forEachRow<Count, 2>(rows, split, [&](std::ptrdiff_t y, SlidingSums<Count, 2> counts) {
            float* const dst = job_.dstRow(y) + left_;
            const auto mark = [&](std::ptrdiff_t first, const auto& infinities) {
                const auto& [rising, falling] = infinities;
                for (std::ptrdiff_t i = 0; i < std::min(counts.lanes, width_ - first); ++i) {
                    if (rising[i] == 0 && falling[i] == 0) continue;
                    const float up = falling[i] == 0 ? infinity : std::numeric_limits<float>::quiet_NaN();
                    dst[first + i] = rising[i] == 0 ? -infinity : up;
                }
            };
            counts.forEachTwo(width_, [&](std::ptrdiff_t x, const auto& low, const auto& high) {
                mark(x, low);
                mark(x + counts.lanes, high);
            });
        });
    }

    /// use(y, sums of the parts under the windows of output row y).
    template <typename Sum, std::size_t parts, typename Split, typename Use>
    void forEachRow(const Rows& rows, const Split& split, const Use& use) {
        using Sums = SlidingSums<Sum, parts>;
        const auto items = static_cast<std::size_t>(source_.padded() + Sums::slack);
        WorkBuffer buffer(parts * WorkBuffer::bytesFor<Sum>(items));
        Columns<Sum, parts> columns;
        for (Sum*& part : columns) part = buffer.take<Sum>(items);
        const RunningColumns<float, Sum, parts> running(job_, source_, columns);
        running.forEachRow(rows.top, rows.bottom, split, [&](std::ptrdiff_t y) {
            use(y, Sums(columns, job_.windowX, source_.padded()));
            rowSpreads_.lookAtNextRow();
        });
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
    const std::ptrdiff_t columns = std::max(blockColumns, 4 * job.windowX.size);
    for (std::ptrdiff_t left = 0; left < job.roi.width; left += columns) {
        FloatStrip(job, begin, end, left, std::min<std::ptrdiff_t>(left + columns, job.roi.width)).filter();
    }
}

}  // namespace zel::host
