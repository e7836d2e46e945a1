#include "Npp/Box/Box.h"
#include "Npp/Box/ColumnSums.h"
#include "Npp/Box/FloatParts.h"
#include "Npp/Box/PrefixSum.h"
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

/// Window sums of a block's rows, row after row, of each part that `split` makes of a pixel.
template <typename Sum, std::size_t parts>
class RunningWindows {
public:
    RunningWindows(const BoxJob<float>& job, const SourceColumns& source, std::ptrdiff_t width)
        : job_(job),
          source_(source),
          width_(static_cast<std::size_t>(width)),
          padded_(static_cast<std::size_t>(source.padded())),
          buffer_(parts * (WorkBuffer::bytesFor<Sum>(padded_) + WorkBuffer::bytesFor<Sum>(width_ + 1))) {
        for (Sum*& columns : columns_) columns = buffer_.take<Sum>(padded_);
        for (Sum*& sums : sums_) sums = buffer_.take<Sum>(width_ + 1);
    }

    /// use(y, sums) for output rows [top, bottom).
    template <typename Split, typename Use>
    void forEachRow(std::ptrdiff_t top, std::ptrdiff_t bottom, const Split& split, const Use& use) {
        Columns<Sum, parts> sourceColumns = columns_;
        for (Sum*& columns : sourceColumns) columns += source_.padLeft;
        for (std::ptrdiff_t y = top; y < bottom; ++y) {
            if (y == top) {
                startColumns(job_, y, source_.first, sourceColumns, source_.count, split);
            } else {
                slideColumns(job_, y, source_.first, sourceColumns, source_.count, split);
            }
            for (std::size_t i = 0; i < parts; ++i) {
                source_.pad(columns_[i]);
                slidingSums(columns_[i], sums_[i], width_, static_cast<std::size_t>(job_.windowX.size),
                            repeatedColumns<Sum>(job_.windowX, columns_[i], source_.padded()));
            }
            use(y, sums_);
        }
    }

private:
    const BoxJob<float>& job_;
    const SourceColumns& source_;
    std::size_t width_;
    std::size_t padded_;
    WorkBuffer buffer_;
    Columns<Sum, parts> columns_;
    Columns<Sum, parts> sums_;
};

/// A block of output pixels: all of its means are worked out in the same way.
class FloatBlock {
public:
    FloatBlock(const BoxJob<float>& job, std::ptrdiff_t top, std::ptrdiff_t bottom, std::ptrdiff_t left,
               std::ptrdiff_t right)
        : job_(job),
          top_(top),
          bottom_(bottom),
          left_(left),
          width_(right - left),
          area_(static_cast<float>(job.area)),
          source_(job, job.windowX, left, right) {}

    void filter() const {
        const FloatSpread spread = spreadOfPixels();
        const FloatUnits units(spread, job_.area);
        const std::ptrdiff_t columns = std::max(hardBlockColumns, 4 * job_.windowX.size);
        if ((units.parts() > 1 || !spread.allFinite()) && width_ > columns) {
            for (std::ptrdiff_t x = 0; x < width_; x += columns) {
                FloatBlock(job_, top_, bottom_, left_ + x, left_ + std::min(x + columns, width_)).filter();
            }
        } else if (spread.allFinite()) {
            filter(units, [](float pixel) { return pixel; });
        } else {
            filter(units, [](float pixel) { return isFinite(pixel) ? pixel : 0.0f; });
            markWindowsWithoutSum();
        }
    }

private:
    /// Reads the block. The row below is asked for ahead: the machine reads ahead by itself within a page only.
    FloatSpread spreadOfPixels() const {
        constexpr std::ptrdiff_t ahead = 256, cacheLine = 16;
        const std::ptrdiff_t top = job_.offset.y + top_ - job_.windowY.before;
        const std::ptrdiff_t end = top + bottom_ - top_ + job_.windowY.size - 1;
        FloatSpread spread;
        for (auto y = std::max<std::ptrdiff_t>(top, 0); y < std::min<std::ptrdiff_t>(end, job_.size.height); ++y) {
            const float* const row = job_.srcRow(y) + source_.first;
            const float* const below = job_.srcRow(y + 1) + source_.first;
            for (std::ptrdiff_t x = 0; x < source_.count; x += ahead) {
                const std::ptrdiff_t count = std::min(ahead, source_.count - x);
                for (std::ptrdiff_t i = 0; i < count; i += cacheLine) __builtin_prefetch(below + x + i);
                spread.add(row + x, count);
            }
        }
        return spread;
    }

    /// @param clean  takes the infinities and NaN out of the block's pixels.
    template <typename Clean>
    void filter(const FloatUnits& units, const Clean& clean) const {
        if (units.parts() == 1) {
            filterInParts<1>(units, clean);
        } else if (units.parts() == 2) {
            filterInParts<2>(units, clean);
        } else if (units.parts() <= 4) {
            filterInParts<4>(units, clean);
        } else if (units.parts() <= FloatUnits::maxParts) {
            filterInParts<FloatUnits::maxParts>(units, clean);
        } else {
            filterRows<WideSum, 1>([=](float pixel) { return std::array{WideSum(clean(pixel))}; },
                                   [](const std::array<WideSum, 1>& sum) { return static_cast<float>(sum[0]); });
        }
    }

    template <std::size_t parts, typename Clean>
    void filterInParts(const FloatUnits& units, const Clean& clean) const {
        filterRows<double, parts>([=, of = FloatParts<parts>(units)](float pixel) { return of.split(clean(pixel)); },
                                  [of = FloatParts<parts>(units)](const auto& sums) { return of.round(sums); });
    }

    template <typename Sum, std::size_t parts, typename Split, typename Round>
    void filterRows(const Split& split, const Round& round) const {
        forEachRow<Sum, parts>(split, [=, width = width_, area = area_](float* dst, const Columns<Sum, parts>& sums) {
            const auto mean = [=]<std::size_t... i>(std::ptrdiff_t x, std::index_sequence<i...>) {
                return round(std::array<Sum, parts>{sums[i][x]...}) / area;
            };
#pragma omp simd
            for (std::ptrdiff_t x = 0; x < width; ++x) dst[x] = mean(x, std::make_index_sequence<parts>());
        });
    }

    /// What plain addition gives where infinities or NaN are in a window, in place of the mean of its finite pixels.
    void markWindowsWithoutSum() const {
        // NaN counts as infinities of both signs, whose sum it is.
        const auto split = [](float pixel) {
            const std::uint64_t counts = isFinite(pixel) ? 0 : 1;
            return std::array{pixel < 0 ? 0 : counts, pixel > 0 ? 0 : counts};
        };
        forEachRow<std::uint64_t, 2>(split, [&](float* dst, const Columns<std::uint64_t, 2>& sums) {
            constexpr float infinity = std::numeric_limits<float>::infinity();
            const auto& [rising, falling] = sums;
#pragma omp simd
            for (std::ptrdiff_t x = 0; x < width_; ++x) {
                const float up = falling[x] == 0 ? infinity : std::numeric_limits<float>::quiet_NaN();
                const float marked = rising[x] == 0 ? -infinity : up;
                dst[x] = (rising[x] | falling[x]) == 0 ? dst[x] : marked;
            }
        });
    }

    /// use(output row, sums of the parts under its windows).
    template <typename Sum, std::size_t parts, typename Split, typename Use>
    void forEachRow(const Split& split, const Use& use) const {
        RunningWindows<Sum, parts>(job_, source_, width_)
            .forEachRow(top_, bottom_, split,
                        [&](std::ptrdiff_t y, const Columns<Sum, parts>& sums) { use(job_.dstRow(y) + left_, sums); });
    }

    const BoxJob<float>& job_;
    std::ptrdiff_t top_;
    std::ptrdiff_t bottom_;
    std::ptrdiff_t left_;
    std::ptrdiff_t width_;
    float area_;
    SourceColumns source_;
};

}  // namespace

void filterBoxRows(const BoxJob<Npp32f>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    const std::ptrdiff_t rows = std::max(blockRows, 4 * job.windowY.size);
    const std::ptrdiff_t columns = std::max(blockColumns, 4 * job.windowX.size);
    for (std::ptrdiff_t left = 0; left < job.roi.width; left += columns) {
        const std::ptrdiff_t right = std::min<std::ptrdiff_t>(left + columns, job.roi.width);
        for (std::ptrdiff_t top = begin; top < end; top += rows) {
            FloatBlock(job, top, std::min(top + rows, end), left, right).filter();
        }
    }
}

}  // namespace zel::host
