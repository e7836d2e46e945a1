#pragma once

#include <cstddef>

#include "Fft/Panel.h"

namespace zel::host {

/// A point of all lines of a panel.
template <typename R>
struct PanelPoint {
    Lanes<R> re, im;

    static PanelPoint load(const R* point) { return {loadLanes(point), loadLanes(point + panelLines<R>)}; }
    void store(R* point) const {
        storeLanes(re, point);
        storeLanes(im, point + panelLines<R>);
    }
    PanelPoint times(R x, R y) const { return {re * x - im * y, re * y + im * x}; }
    /// Multiplied by i, or by -i.
    template <FftDirection direction>
    PanelPoint turned() const {
        if constexpr (direction == FftDirection::forward)
            return {im, -re};
        else
            return {-im, re};
    }

    friend PanelPoint operator+(const PanelPoint& a, const PanelPoint& b) { return {a.re + b.re, a.im + b.im}; }
    friend PanelPoint operator-(const PanelPoint& a, const PanelPoint& b) { return {a.re - b.re, a.im - b.im}; }
    friend PanelPoint operator*(const PanelPoint& a, R factor) { return {a.re * factor, a.im * factor}; }
};

// Transforms of a few points in registers, in place.

template <FftDirection direction, typename R>
[[gnu::always_inline]] inline void butterfly(PanelPoint<R> (&x)[2]) {
    const auto a = x[0];
    x[0] = a + x[1];
    x[1] = a - x[1];
}

template <FftDirection direction, typename R>
[[gnu::always_inline]] inline void butterfly(PanelPoint<R> (&x)[4]) {
    const auto a = x[0] + x[2], b = x[0] - x[2], c = x[1] + x[3], d = (x[1] - x[3]).template turned<direction>();
    x[0] = a + c;
    x[1] = b + d;
    x[2] = a - c;
    x[3] = b - d;
}

template <FftDirection direction, typename R>
[[gnu::always_inline]] inline void butterfly(PanelPoint<R> (&x)[8]) {
    constexpr R root = R(0.70710678118654752440);
    constexpr R sign = direction == FftDirection::forward ? R(-1) : R(1);
    PanelPoint<R> even[4] = {x[0], x[2], x[4], x[6]}, odd[4] = {x[1], x[3], x[5], x[7]};
    butterfly<direction>(even);
    butterfly<direction>(odd);
    odd[1] = odd[1].times(root, sign * root);
    odd[2] = odd[2].template turned<direction>();
    odd[3] = odd[3].times(-root, sign * root);
    for (std::size_t k = 0; k < 4; ++k) {
        x[k] = even[k] + odd[k];
        x[k + 4] = even[k] - odd[k];
    }
}

template <FftDirection direction, typename R>
[[gnu::always_inline]] inline void butterfly(PanelPoint<R> (&x)[3]) {
    constexpr R sine = R(0.86602540378443864676);
    const auto sum = x[1] + x[2], middle = x[0] - sum * R(0.5);
    const auto side = ((x[1] - x[2]) * sine).template turned<direction>();
    x[0] = x[0] + sum;
    x[1] = middle + side;
    x[2] = middle - side;
}

template <FftDirection direction, typename R>
[[gnu::always_inline]] inline void butterfly(PanelPoint<R> (&x)[9]) {
    constexpr R sign = direction == FftDirection::forward ? R(-1) : R(1);
    PanelPoint<R> a[3] = {x[0], x[3], x[6]}, b[3] = {x[1], x[4], x[7]}, c[3] = {x[2], x[5], x[8]};
    butterfly<direction>(a);
    butterfly<direction>(b);
    butterfly<direction>(c);
    b[1] = b[1].times(R(0.76604444311897803520), sign * R(0.64278760968653932632));
    b[2] = b[2].times(R(0.17364817766693034885), sign * R(0.98480775301220805937));
    c[1] = c[1].times(R(0.17364817766693034885), sign * R(0.98480775301220805937));
    c[2] = c[2].times(R(-0.93969262078590838405), sign * R(0.34202014332566873304));
    for (std::size_t k = 0; k < 3; ++k) {
        PanelPoint<R> d[3] = {a[k], b[k], c[k]};
        butterfly<direction>(d);
        x[k] = d[0];
        x[k + 3] = d[1];
        x[k + 6] = d[2];
    }
}

template <FftDirection direction, typename R>
[[gnu::always_inline]] inline void butterfly(PanelPoint<R> (&x)[5]) {
    constexpr R c1 = R(0.30901699437494742410), c2 = R(-0.80901699437494742410);
    constexpr R s1 = R(0.95105651629515357212), s2 = R(0.58778525229247312917);
    const auto p1 = x[1] + x[4], p2 = x[2] + x[3], m1 = x[1] - x[4], m2 = x[2] - x[3];
    const auto a1 = x[0] + p1 * c1 + p2 * c2, a2 = x[0] + p1 * c2 + p2 * c1;
    const auto b1 = (m1 * s1 + m2 * s2).template turned<direction>();
    const auto b2 = (m1 * s2 - m2 * s1).template turned<direction>();
    x[0] = x[0] + p1 + p2;
    x[1] = a1 + b1;
    x[4] = a1 - b1;
    x[2] = a2 + b2;
    x[3] = a2 - b2;
}

template <FftDirection direction, typename R>
[[gnu::always_inline]] inline void butterfly(PanelPoint<R> (&x)[7]) {
    constexpr R c1 = R(0.62348980185873353053), c2 = R(-0.22252093395631440429), c3 = R(-0.90096886790241912624);
    constexpr R s1 = R(0.78183148246802980871), s2 = R(0.97492791218182360702), s3 = R(0.43388373911755812048);
    const auto p1 = x[1] + x[6], p2 = x[2] + x[5], p3 = x[3] + x[4];
    const auto m1 = x[1] - x[6], m2 = x[2] - x[5], m3 = x[3] - x[4];
    const auto a1 = x[0] + p1 * c1 + p2 * c2 + p3 * c3;
    const auto a2 = x[0] + p1 * c2 + p2 * c3 + p3 * c1;
    const auto a3 = x[0] + p1 * c3 + p2 * c1 + p3 * c2;
    const auto b1 = (m1 * s1 + m2 * s2 + m3 * s3).template turned<direction>();
    const auto b2 = (m1 * s2 - m2 * s3 - m3 * s1).template turned<direction>();
    const auto b3 = (m1 * s3 - m2 * s1 + m3 * s2).template turned<direction>();
    x[0] = x[0] + p1 + p2 + p3;
    x[1] = a1 + b1;
    x[6] = a1 - b1;
    x[2] = a2 + b2;
    x[5] = a2 - b2;
    x[3] = a3 + b3;
    x[4] = a3 - b3;
}

}  // namespace zel::host
