#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Npp/Box/Box.h"
#include "Npp/Box/FloatParts.h"
#include "Npp/Box/FloatSpread.h"
#include "Npp/Box/SlidingSums.h"

namespace zel::host {

/// What pixels are beside a multiple of a unit, where this is nothing for all but a few, such as those next to 0 in
/// noise around it: sums under windows that are worked out from these pixels alone.
class FewRests {
public:
    /// @param units  the first part is for the pixels, the second one for their rests.
    /// @param width  output columns.
    FewRests(const BoxJob<float>& job, const SourceColumns& source, RowSpreads& spreads, const FloatUnits& units,
             std::ptrdiff_t width)
        : job_(job), source_(source), spreads_(spreads), units_(units), parts_(units), width_(width) {}

    /// Goes to the windows of output row y, the first one or the one below the last call's.
    /// @returns  false if that takes pixels which the units do not hold, or too many rests.
    bool goTo(std::ptrdiff_t y) {
        if (!find(y)) return false;
        haveChanged_ = false;
        const WindowAxis& window = job_.windowY;
        const std::ptrdiff_t top = job_.offset.y + y - window.before;
        if (!started_) {
            sums_.resize(static_cast<std::size_t>(width_ + group));
            counts_.resize(sums_.size() / group + 1);
            addRow(0, static_cast<std::int64_t>(window.firstTimes));
            addRow(job_.size.height - 1, static_cast<std::int64_t>(window.lastTimes));
            for (std::ptrdiff_t j = 0; j < window.size; ++j) addRow(top + j, 1);
            started_ = true;
        } else {
            addRow(top + window.size - 1, 1);
            addRow(top - 1, -1);
        }
        return true;
    }

    /// Whether there are rests in the rows that came under the windows or went in the last call of goTo().
    bool haveChanged() const { return haveChanged_; }
    /// Whether there are any under the windows.
    bool areUnderAny() const { return under_ != 0; }
    /// Whether there are any under the two registers of windows from x on, as SlidingSums counts them.
    bool areUnder(std::ptrdiff_t x) const { return counts_[static_cast<std::size_t>(x / group)] != 0; }
    /// Sums under a register of windows.
    Doubles sumsUnder(std::ptrdiff_t x) const {
        Doubles sums;
        std::memcpy(&sums, &sums_[static_cast<std::size_t>(x)], sizeof sums);
        return sums;
    }

private:
    struct Rest {
        std::ptrdiff_t y;
        std::ptrdiff_t x;  // source column
        double value;
    };

    /// Looks for rests in the rows under the windows of output row y, as far as that has not been done.
    bool find(std::ptrdiff_t y) {
        if (!started_) first_ = next_ = job_.firstSrcRowUnder(y);
        const std::ptrdiff_t last = job_.lastSrcRowUnder(y);
        // A rest takes some hundred steps and one for each column of a window; a pixel takes some.
        constexpr std::ptrdiff_t fewRows = 64;
        const std::ptrdiff_t most = std::max(last + 1 - first_, fewRows) * width_ / (8 * (job_.windowX.size + 64));
        for (; next_ <= last; ++next_) {
            const FloatSpread& spread = spreads_.ofRow(next_);
            if (!units_.hold(spread, 2)) return false;
            if (spread.unit() < units_.unit(0)) findInRow(next_);
            if (std::ssize(rests_) > most) return false;
        }
        return true;
    }

    void findInRow(std::ptrdiff_t y) {
        constexpr std::ptrdiff_t piece = 64;
        const float below = std::ldexp(1.0f, units_.unit(0) + 23);  // larger floats have no place below the unit
        const float* const row = job_.srcRow(y) + source_.first;
        for (std::ptrdiff_t begin = 0; begin < source_.count; begin += piece) {
            const std::ptrdiff_t end = std::min(begin + piece, source_.count);
            int small = 0;
#pragma omp simd reduction(| : small)
            for (std::ptrdiff_t x = begin; x < end; ++x) small |= std::fabs(row[x]) < below ? 1 : 0;
            for (std::ptrdiff_t x = begin; small != 0 && x < end; ++x) {
                const double rest = parts_.split(row[x])[1];
                if (rest != 0) rests_.push_back({y, x, rest});
            }
        }
    }

    /// Of the image, or of the nearest row in it.
    void addRow(std::ptrdiff_t row, std::int64_t times) {
        if (times == 0) return;
        const std::ptrdiff_t y = std::clamp<std::ptrdiff_t>(row, 0, job_.size.height - 1);
        auto rest = std::ranges::lower_bound(rests_, y, {}, &Rest::y);
        for (; rest != rests_.end() && rest->y == y; ++rest) {
            addColumn(rest->x, rest->value, times);
            under_ += times;
            haveChanged_ = true;
        }
    }

    void addColumn(std::ptrdiff_t column, double value, std::int64_t times) {
        addPadded(source_.padLeft + column, value, times);
        if (column == 0) {
            for (std::ptrdiff_t x = 0; x < source_.padLeft; ++x) addPadded(x, value, times);
            addTo(0, width_, static_cast<double>(job_.windowX.firstTimes) * value, times);
        }
        if (column == source_.count - 1) {
            for (std::ptrdiff_t x = source_.padLeft + source_.count; x < source_.padded(); ++x)
                addPadded(x, value, times);
            addTo(0, width_, static_cast<double>(job_.windowX.lastTimes) * value, times);
        }
    }

    /// To the windows over a padded column.
    void addPadded(std::ptrdiff_t column, double value, std::int64_t times) {
        addTo(std::max<std::ptrdiff_t>(column + 1 - job_.windowX.size, 0), std::min(column + 1, width_), value, times);
    }

    void addTo(std::ptrdiff_t begin, std::ptrdiff_t end, double value, std::int64_t times) {
        const double all = static_cast<double>(times) * value;
        if (all == 0) return;
        double* const sums = sums_.data();
#pragma omp simd
        for (std::ptrdiff_t x = begin; x < end; ++x) sums[x] += all;
        for (std::ptrdiff_t i = begin / group; i * group < end; ++i) counts_[static_cast<std::size_t>(i)] += times;
    }

    static constexpr std::ptrdiff_t group = 2 * SlidingSum<double>::lanes;

    const BoxJob<float>& job_;
    const SourceColumns& source_;
    RowSpreads& spreads_;
    const FloatUnits& units_;
    FloatParts<2> parts_;
    std::ptrdiff_t width_;
    std::ptrdiff_t first_ = 0;  // row of the image that was looked at
    std::ptrdiff_t next_ = 0;   // to be looked at
    std::vector<Rest> rests_;   // by rows
    std::vector<double> sums_;
    std::vector<std::int64_t> counts_;  // of rests under each group of windows
    std::int64_t under_ = 0;
    bool haveChanged_ = false;
    bool started_ = false;
};

}  // namespace zel::host
