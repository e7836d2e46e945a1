#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <utility>

#include "Npp/Box/ColumnSums.h"
#include "Npp/Box/PrefixSum.h"

namespace zel::host {

/// Sums of columns under the windows of a row, a register of neighbouring windows at a time. A window's sum is that of
/// the window a register before it and what changed on the way there. So nothing is ever added up but sums of windows
/// and differences of two, and doubles do not round where these are exact.
template <typename Sum>
class SlidingSum {
public:
    using Register = typename Vector<Sum>::Type;
    static constexpr std::ptrdiff_t lanes = Vector<Sum>::lanes;
    /// Columns behind the last window's that are read, of any value.
    static constexpr std::ptrdiff_t slack = (std::bit_width(Vector<Sum>::lanes) + 1) * lanes;

    SlidingSum() = default;
    SlidingSum(const Sum* columns, const WindowAxis& window, std::ptrdiff_t padded)
        : entering_(columns + window.size), leaving_(columns) {
        Sum sum = repeatedColumns<Sum>(window, columns, padded);
#pragma omp simd reduction(+ : sum)
        for (std::ptrdiff_t x = 0; x < window.size; ++x) sum += columns[x];
        for (std::ptrdiff_t i = 0; i < lanes; ++i) {
            sums_[i] = sum;
            sum += entering_[i] - leaving_[i];
        }
        for (std::size_t i = 0; i < levels; ++i) nextChange();
    }

    /// Of the first windows, and of those next to the last call's.
    Register next() {
        const Register sums = sums_;
        sums_ += nextChange();
        return sums;
    }

private:
    static constexpr std::size_t levels = std::bit_width(Vector<Sum>::lanes) - 1;

    /// What comes on top of some windows' sums on the way to the windows a register behind them, which takes as many
    /// steps as there are lanes.
    Register nextChange() {
        Register leaving, entering;
        std::memcpy(&leaving, leaving_, sizeof leaving);
        std::memcpy(&entering, entering_, sizeof entering);
        leaving_ += lanes;
        entering_ += lanes;
        return addedUp<0>(entering - leaving);
    }

    /// Sums of 2^level neighbouring steps come in, those of all lanes go out.
    template <std::size_t level>
    Register addedUp(Register steps) {
        if constexpr (level == levels) {
            return steps;
        } else {
            const Register before = std::exchange(before_[level], steps);
            return addedUp<level + 1>(before + further<1U << level>(before, steps, Lanes()));
        }
    }

    /// The lanes so many places further on in two registers.
    template <std::size_t places, std::size_t... lane>
    static Register further(Register first, Register second, std::index_sequence<lane...>) {
        return __builtin_shufflevector(first, second, (lane + places)...);
    }
    using Lanes = std::make_index_sequence<Vector<Sum>::lanes>;

    const Sum* entering_ = nullptr;
    const Sum* leaving_ = nullptr;
    Register sums_{};
    std::array<Register, levels> before_{};
};

/// Sums of several columns at the same place, see Columns.
template <typename Sum, std::size_t parts>
class SlidingSums {
public:
    static constexpr std::ptrdiff_t lanes = SlidingSum<Sum>::lanes;
    static constexpr std::ptrdiff_t slack = SlidingSum<Sum>::slack;

    SlidingSums(const Columns<Sum, parts>& columns, const WindowAxis& window, std::ptrdiff_t padded) {
        for (std::size_t i = 0; i < parts; ++i) sums_[i] = SlidingSum<Sum>(columns[i], window, padded);
    }

    /// use(x, sums of the windows from x on, those from x + lanes on), a register of them for each part, until `count`
    /// windows are covered.
    template <typename Use>
    void forEachTwo(std::ptrdiff_t count, const Use& use) {
        for (std::ptrdiff_t x = 0; x < count; x += 2 * lanes) {
            const auto low = next(Parts());
            use(x, low, next(Parts()));
        }
    }

private:
    using Parts = std::make_index_sequence<parts>;

    template <std::size_t... i>
    std::array<typename SlidingSum<Sum>::Register, parts> next(std::index_sequence<i...>) {
        return {sums_[i].next()...};
    }

    std::array<SlidingSum<Sum>, parts> sums_;
};

}  // namespace zel::host
