#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Npp/Common/WorkBuffer.h"

namespace zel::host {

/// Finds the value of a rank in windows of bytes at a cost that does not depend on the windows' size (Perreault and
/// Hébert, Median filtering in constant time, 2007): each column has a histogram of the rows under the windows, the
/// histogram of a window is a sum of columns, kept up to date from window to window. All histograms are cumulative,
/// bin i counting the bytes up to i, so that a rank is found by one comparison of all bins. There is one histogram of
/// the high half-bytes, and for each of them one of the low half-bytes, summed only where the value sought lies.
///
/// @tparam Count  unsigned, for as many as a window has bytes.
template <typename Count>
class ColumnHistograms {
public:
    ColumnHistograms(WorkBuffer& buffer, std::ptrdiff_t maxColumns, std::ptrdiff_t windowWidth)
        : width_(windowWidth),
          high_(buffer.template take<Count>(static_cast<std::size_t>(bins * maxColumns))),
          low_(buffer.template take<Count>(static_cast<std::size_t>(bins * bins * maxColumns))) {}
    static std::size_t bytesFor(std::ptrdiff_t maxColumns) {
        return WorkBuffer::bytesFor<Count>(static_cast<std::size_t>(bins * maxColumns)) +
               WorkBuffer::bytesFor<Count>(static_cast<std::size_t>(bins * bins * maxColumns));
    }

    /// Starts anew with so many columns of bytes, at least as many as a window has.
    void reset(std::ptrdiff_t columns) {
        columns_ = columns;
        std::fill_n(high_, bins * columns, Count{0});
        std::fill_n(low_, bins * bins * columns, Count{0});
    }

    void addRow(const std::uint8_t* row) {
        for (std::ptrdiff_t x = 0; x < columns_; ++x) {
            const Bins highAtLeast = atLeast(row[x] >> 4), lowAtLeast = atLeast(row[x] & 15);
            change(high(x), [&](Bins& counts) { counts += highAtLeast; });
            change(low(row[x] >> 4, x), [&](Bins& counts) { counts += lowAtLeast; });
        }
    }

    void replaceRow(const std::uint8_t* before, const std::uint8_t* after) {
        for (std::ptrdiff_t x = 0; x < columns_; ++x) {
            const Bins highChange = atLeast(after[x] >> 4) - atLeast(before[x] >> 4);
            const Bins lowBefore = atLeast(before[x] & 15), lowAfter = atLeast(after[x] & 15);
            change(high(x), [&](Bins& counts) { counts += highChange; });
            change(low(before[x] >> 4, x), [&](Bins& counts) { counts -= lowBefore; });
            change(low(after[x] >> 4, x), [&](Bins& counts) { counts += lowAfter; });
        }
    }

    /// found(x, byte, rest) for windows from column x on: their byte that has `rank` others before it, of which `rest`
    /// are equal to it.
    template <typename Found>
    void find(Count rank, const Found& found) const {
        Bins highs{};
        for (std::ptrdiff_t x = 0; x < width_; ++x) highs += loaded(high(x));
        std::array<LowSum, bins> lowSums;
        for (std::ptrdiff_t x = 0;; ++x) {
            const auto [highHalf, highRest] = binOf(highs, rank);
            LowSum& lows = lowSums[highHalf];
            moveTo(lows, highHalf, x);
            const auto [lowHalf, rest] = binOf(lows.counts, highRest);
            found(x, static_cast<std::uint8_t>(highHalf << 4 | lowHalf), rest);
            if (x + width_ >= columns_) break;
            highs += loaded(high(x + width_)) - loaded(high(x));
        }
    }

private:
    static constexpr std::ptrdiff_t bins = 16;
    using Bins [[gnu::vector_size(bins * sizeof(Count))]] = Count;

    /// Sum over the columns of the window at x.
    struct LowSum {
        Bins counts;
        std::ptrdiff_t x = -1;  ///< none yet
    };
    struct Bin {
        std::size_t number;
        Count rest;  ///< of the rank, once the bins before are taken off
    };

    Count* high(std::ptrdiff_t x) const { return high_ + x * bins; }
    Count* low(std::ptrdiff_t highHalf, std::ptrdiff_t x) const { return low_ + (highHalf * columns_ + x) * bins; }

    static Bins loaded(const Count* from) {
        Bins counts;
        std::memcpy(&counts, from, sizeof(counts));
        return counts;
    }
    template <typename Change>
    static void change(Count* where, const Change& apply) {
        Bins counts = loaded(where);
        apply(counts);
        std::memcpy(where, &counts, sizeof(counts));
    }

    /// 1 in the bins from that one on.
    static Bins atLeast(int bin) {
        static constexpr auto steps = [] {
            std::array<Count, 2 * bins> result{};
            std::fill(result.begin() + bins, result.end(), Count{1});
            return result;
        }();
        return loaded(steps.data() + bins - bin);
    }

    static Bin binOf(const Bins& counts, Count rank) {
        using Bytes [[gnu::vector_size(bins)]] = std::int8_t;
        const Bytes isBefore = __builtin_convertvector(counts <= rank, Bytes);
        std::array<std::uint64_t, 2> words;
        static_assert(sizeof(words) == sizeof(isBefore));
        std::memcpy(words.data(), &isBefore, sizeof(words));
        const auto number = static_cast<std::size_t>(std::popcount(words[0]) + std::popcount(words[1])) / 8;
        std::array<Count, bins + 1> before;
        before[0] = 0;
        std::memcpy(before.data() + 1, &counts, sizeof(counts));
        return {number, static_cast<Count>(rank - before[number])};
    }

    void moveTo(LowSum& sum, std::size_t highHalf, std::ptrdiff_t x) const {
        const auto half = static_cast<std::ptrdiff_t>(highHalf);
        if (sum.x < 0 || 2 * (x - sum.x) > width_) {
            sum.counts = Bins{};
            for (std::ptrdiff_t i = x; i < x + width_; ++i) sum.counts += loaded(low(half, i));
        } else {
            for (std::ptrdiff_t i = sum.x; i < x; ++i)
                sum.counts += loaded(low(half, i + width_)) - loaded(low(half, i));
        }
        sum.x = x;
    }

    std::ptrdiff_t columns_ = 0;
    std::ptrdiff_t width_;
    Count* high_;
    Count* low_;  ///< of each high half-byte all columns in turn
};

}  // namespace zel::host
