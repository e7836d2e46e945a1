#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

#include "Npp/Box/ColumnSums.h"
#include "Npp/Box/PrefixSum.h"

namespace zel::host {

/// Sums of columns under the windows of a row, in two registers of neighbouring windows at a time, of each part. What
/// is added up on the way are window sums and differences of two, so that doubles do not round where these are exact.
template <typename Sum, std::size_t parts>
class SlidingSums {
public:
    using Register = typename Vector<Sum>::Type;
    using Sums = std::array<Register, parts>;
    static constexpr std::ptrdiff_t lanes = Vector<Sum>::lanes;
    static constexpr std::ptrdiff_t slack = 2 * lanes;  ///< columns that are read beyond the last one, of any value

    SlidingSums(const Columns<Sum, parts>& columns, const WindowAxis& window, std::ptrdiff_t padded)
        : columns_(columns), size_(window.size) {
        for (std::size_t i = 0; i < parts; ++i) {
            Sum sum = repeatedColumns<Sum>(window, columns[i], padded);
            const Sum* const column = columns[i];
#pragma omp simd reduction(+ : sum)
            for (std::ptrdiff_t x = 0; x < size_; ++x) sum += column[x];
            first_[i] = sum;
        }
    }

    /// use(x, sums of the windows from x on, those from x + lanes on), a register of them each, until `count` are
    /// covered.
    template <typename Use>
    void forEachTwo(std::ptrdiff_t count, const Use& use) {
        const Sums first = start(Parts());
        use(0, first, next(lanes, Parts()));
        for (std::ptrdiff_t x = 2 * lanes; x < count; x += 2 * lanes) {
            const Sums low = next(x, Parts());
            use(x, low, next(x + lanes, Parts()));
        }
    }

private:
    using Parts = std::make_index_sequence<parts>;
    using Lanes = std::make_index_sequence<Vector<Sum>::lanes>;

    template <std::size_t... i>
    Sums start(std::index_sequence<i...>) {
        return {startPart(columns_[i], first_[i], before_[i])...};
    }
    template <std::size_t... i>
    Sums next(std::ptrdiff_t x, std::index_sequence<i...>) {
        return {nextPart(columns_[i] + x - 1, before_[i])...};
    }

    Register startPart(const Sum* columns, Sum first, Register& before) const {
        const Register local = steps(columns);
        const Register sums = first + detail::shiftedUp<1>(local, Lanes());
        before = detail::lastInAll(sums, Lanes());
        return sums;
    }

    /// The sums of the windows behind the one at `columns`, whose sum is `before`.
    Register nextPart(const Sum* columns, Register& before) const {
        const Register local = steps(columns);
        const Register sums = before + local;
        // Off the local sums, so that register follows register by one addition.
        before += detail::lastInAll(local, Lanes());
        return sums;
    }

    /// By how much the sums of the next windows differ from that of the window at `columns`.
    Register steps(const Sum* columns) const {
        Register leaving, entering;
        std::memcpy(&leaving, columns, sizeof leaving);
        std::memcpy(&entering, columns + size_, sizeof entering);
        return detail::scanned<1, lanes>(entering - leaving);
    }

    Columns<Sum, parts> columns_;
    std::ptrdiff_t size_;
    std::array<Sum, parts> first_;
    Sums before_{};
};

}  // namespace zel::host
