#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

namespace zel::host {

enum class FftDirection { forward = -1, inverse = 1 };  ///< the sign of the exponent

/// Lines that are transformed side by side: as many as a cache line holds real numbers. A panel holds them point by
/// point, aligned to 64 bytes: the real parts of a point of all lines, then the imaginary ones.
template <typename R>
inline constexpr std::size_t panelLines = 64 / sizeof(R);

/// From one point of a panel to the next.
template <typename R>
inline constexpr std::size_t panelStep = 2 * panelLines<R>;

/// A number of each line of a panel.
template <typename R>
using Lanes [[gnu::vector_size(64)]] = R;

/// The first `count` numbers of lanes, from memory of any alignment; the others are 0.
template <typename R>
Lanes<R> loadLanes(const R* numbers, std::size_t count = panelLines<R>) {
    Lanes<R> lanes{};
    if (count == panelLines<R>)
        std::memcpy(&lanes, numbers, sizeof lanes);
    else
        std::memcpy(&lanes, numbers, count * sizeof(R));
    return lanes;
}

template <typename R>
void storeLanes(const Lanes<std::type_identity_t<R>>& lanes, R* numbers, std::size_t count = panelLines<R>) {
    if (count == panelLines<R>)
        std::memcpy(numbers, &lanes, sizeof lanes);
    else
        std::memcpy(numbers, &lanes, count * sizeof(R));
}

namespace detail {

/// Lane i of the result is lane pick(i) of a and b in turn.
template <typename R, typename Pick, std::size_t... i>
Lanes<R> shuffled(const Lanes<R>& a, const Lanes<R>& b, Pick, std::index_sequence<i...>) {
    return __builtin_shufflevector(a, b, Pick()(i)...);
}
template <typename R, typename Pick>
Lanes<R> shuffled(const Lanes<R>& a, const Lanes<R>& b, Pick pick) {
    return shuffled<R>(a, b, pick, std::make_index_sequence<panelLines<R>>());
}

/// Exchanges the blocks of `width` by `width` numbers beside the diagonal.
template <typename R, std::size_t width>
[[gnu::always_inline]] inline void exchangeBlocks(Lanes<R>* rows) {
    constexpr std::size_t lines = panelLines<R>;
    for (std::size_t i = 0; i < lines; ++i) {
        if ((i & width) != 0) continue;
        const Lanes<R> a = rows[i], b = rows[i + width];
        rows[i] = shuffled<R>(
            a, b, [](std::size_t t) constexpr { return (t & width) == 0 ? t : lines + t - width; });
        rows[i + width] = shuffled<R>(
            a, b, [](std::size_t t) constexpr { return (t & width) == 0 ? t + width : lines + t; });
    }
    if constexpr (width > 1) exchangeBlocks<R, width / 2>(rows);
}

}  // namespace detail

/// Lane j of row i changes places with lane i of row j.
template <typename R>
void transpose(Lanes<R> (&rows)[panelLines<R>]) {
    detail::exchangeBlocks<R, panelLines<R> / 2>(rows);
}

/// Real and imaginary parts of complex numbers.
template <typename R>
struct Parts {
    Lanes<R> re, im;

    /// The first `count` of complex numbers that lie one after the other.
    static Parts load(const R* numbers, std::size_t count = panelLines<R>) {
        constexpr std::size_t lines = panelLines<R>;
        const std::size_t reals = 2 * count;
        const Lanes<R> first = loadLanes(numbers, reals < lines ? reals : lines);
        const Lanes<R> second = reals > lines ? loadLanes(numbers + lines, reals - lines) : Lanes<R>{};
        return {detail::shuffled<R>(
                    first, second, [](std::size_t t) constexpr { return 2 * t; }),
                detail::shuffled<R>(
                    first, second, [](std::size_t t) constexpr { return 2 * t + 1; })};
    }
    void store(R* numbers, std::size_t count = panelLines<R>) const {
        constexpr std::size_t lines = panelLines<R>;
        const std::size_t reals = 2 * count;
        const Lanes<R> first = detail::shuffled<R>(
            re, im, [](std::size_t t) constexpr { return t / 2 + (t % 2) * lines; });
        const Lanes<R> second = detail::shuffled<R>(
            re, im, [](std::size_t t) constexpr { return lines / 2 + t / 2 + (t % 2) * lines; });
        storeLanes(first, numbers, reals < lines ? reals : lines);
        if (reals > lines) storeLanes(second, numbers + lines, reals - lines);
    }
};

}  // namespace zel::host
