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
    /// @param width  output columns.
    FewRests(const BoxJob<float>& job, const SourceColumns& source, std::ptrdiff_t width)
        : job_(job), source_(source), width_(width) {}

    /// Looks for the pixels under the windows of output rows [top, bottom).
    /// @returns  false if they are too many for this to be worth while.
    bool find(const FloatParts<2>& of, int unit, RowSpreads& spreads, std::ptrdiff_t top, std::ptrdiff_t bottom) {
        // One takes some hundred steps and one for each column of a window; a pixel takes some.
        const std::ptrdiff_t most = (bottom - top) * width_ / (8 * (job_.windowX.size + 64));
        const float below = std::ldexp(1.0f, unit + 23);  // larger floats have no place below the unit
        const std::ptrdiff_t last = job_.lastSrcRowUnder(bottom - 1);
        for (std::ptrdiff_t y = job_.firstSrcRowUnder(top); y <= last; ++y) {
            if (spreads.ofRow(y).unit() >= unit) continue;
            findInRow(of, below, y);
            if (std::ssize(rests_) > most) return false;
        }
        sums_.resize(static_cast<std::size_t>(width_ + Sums::slack));
        counts_.resize(sums_.size() / group + 1);
        return true;
    }

    /// Goes to the windows of output row y, the first one or the one behind the last call's.
    void goTo(std::ptrdiff_t y) {
        const WindowAxis& window = job_.windowY;
        const std::ptrdiff_t top = job_.offset.y + y - window.before;
        if (!started_) {
            addRow(0, static_cast<std::int64_t>(window.firstTimes));
            addRow(job_.size.height - 1, static_cast<std::int64_t>(window.lastTimes));
            for (std::ptrdiff_t j = 0; j < window.size; ++j) addRow(top + j, 1);
            started_ = true;
        } else {
            addRow(top + window.size - 1, 1);
            addRow(top - 1, -1);
        }
    }

    /// Whether there are rests under the two registers of windows from x on, as SlidingSums counts them.
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

    void findInRow(const FloatParts<2>& of, float below, std::ptrdiff_t y) {
        constexpr std::ptrdiff_t piece = 64;
        const float* const row = job_.srcRow(y) + source_.first;
        for (std::ptrdiff_t begin = 0; begin < source_.count; begin += piece) {
            const std::ptrdiff_t end = std::min(begin + piece, source_.count);
            int small = 0;
#pragma omp simd reduction(| : small)
            for (std::ptrdiff_t x = begin; x < end; ++x) small |= std::fabs(row[x]) < below ? 1 : 0;
            for (std::ptrdiff_t x = begin; small != 0 && x < end; ++x) {
                const double rest = of.split(row[x])[1];
                if (rest != 0) rests_.push_back({y, x, rest});
            }
        }
    }

    /// Of the image, or of the nearest row in it.
    void addRow(std::ptrdiff_t row, std::int64_t times) {
        if (times == 0) return;
        const std::ptrdiff_t y = std::clamp<std::ptrdiff_t>(row, 0, job_.size.height - 1);
        auto rest = std::ranges::lower_bound(rests_, y, {}, &Rest::y);
        for (; rest != rests_.end() && rest->y == y; ++rest) addColumn(rest->x, rest->value, times);
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

    using Sums = SlidingSums<double, 1>;
    static constexpr std::ptrdiff_t group = 2 * Sums::lanes;

    const BoxJob<float>& job_;
    const SourceColumns& source_;
    std::ptrdiff_t width_;
    std::vector<Rest> rests_;  // by rows
    std::vector<double> sums_;
    std::vector<std::int64_t> counts_;  // of rests under each group of windows
    bool started_ = false;
};

}  // namespace zel::host
