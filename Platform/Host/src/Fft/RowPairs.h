#pragma once

#include <algorithm>
#include <complex>
#include <cstddef>

#include "Fft/PanelTransform.h"

// Two real rows travel as the real and imaginary parts of one complex line: one transform for both, and as fast for odd
// lengths as for even ones. Row 2l and row 2l + 1 share line l of a panel. For real a and b with spectra A and B, the
// line z = a + ib has Z[k] = A[k] + iB[k], and conj(Z[n - k]) = A[k] - iB[k].
namespace zel::host {

template <typename R>
inline constexpr std::size_t rowsPerPanel = 2 * panelLines<R>;

/// Whether all numbers are 0. Padded images have many such rows.
template <typename R>
bool isZero(const R* numbers, std::size_t count) {
    constexpr std::size_t atOnce = 256;
    for (std::size_t begin = 0; begin < count; begin += atOnce) {
        unsigned found = 0;
        for (std::size_t i = begin; i < std::min(count, begin + atOnce); ++i) found |= numbers[i] != R(0) ? 1 : 0;
        if (found != 0) return false;
    }
    return true;
}

/// Calls body(first point, number of points) for stretches of as many points as a panel has lines.
template <typename R, typename Body>
void forEachStretch(std::size_t length, const Body& body) {
    constexpr std::size_t stretch = panelLines<R>;
    for (std::size_t begin = 0; begin < length; begin += stretch) body(begin, std::min(stretch, length - begin));
}

/// Fills a panel with `count` packed rows of n numbers; lines without a row are 0.
template <typename R>
void packRowPairs(const R* rows, std::size_t n, std::size_t count, R* panel) {
    constexpr std::size_t lines = panelLines<R>, step = panelStep<R>;
    forEachStretch<R>(n, [&](std::size_t begin, std::size_t points) {
        for (std::size_t part = 0; part < 2; ++part) {
            Lanes<R> square[lines];
            for (std::size_t l = 0; l < lines; ++l) {
                const std::size_t row = 2 * l + part;
                square[l] = row < count ? loadLanes(rows + row * n + begin, points) : Lanes<R>{};
            }
            transpose<R>(square);
            for (std::size_t p = 0; p < points; ++p) storeLanes(square[p], panel + (begin + p) * step + part * lines);
        }
    });
}

/// The real rows of a panel.
template <typename R>
void unpackRowPairs(const TransformedPanel<R>& panel, std::size_t n, R* rows, std::size_t count) {
    constexpr std::size_t lines = panelLines<R>;
    forEachStretch<R>(n, [&](std::size_t begin, std::size_t points) {
        for (std::size_t part = 0; part < 2; ++part) {
            Lanes<R> square[lines]{};
            for (std::size_t p = 0; p < points; ++p) square[p] = loadLanes(panel.point(begin + p) + part * lines);
            transpose<R>(square);
            for (std::size_t row = part; row < count; row += 2)
                storeLanes(square[row / 2], rows + row * n + begin, points);
        }
    });
}

/// The half spectra of `count` rows from the transform of their pairs.
template <typename R>
void splitRowPairs(const TransformedPanel<R>& panel, std::size_t n, std::complex<R>* spectra, std::size_t width,
                   std::size_t count) {
    constexpr std::size_t lines = panelLines<R>;
    forEachStretch<R>(width, [&](std::size_t begin, std::size_t points) {
        Lanes<R> re[2][lines]{}, im[2][lines]{};
        for (std::size_t p = 0; p < points; ++p) {
            const std::size_t k = begin + p;
            const R* const z = panel.point(k);
            const R* const mirror = panel.point(k == 0 ? 0 : n - k);
            const Lanes<R> x = loadLanes(z), y = loadLanes(z + lines);
            const Lanes<R> mirrorX = loadLanes(mirror), mirrorY = loadLanes(mirror + lines);
            re[0][p] = R(0.5) * (x + mirrorX);
            im[0][p] = R(0.5) * (y - mirrorY);
            re[1][p] = R(0.5) * (y + mirrorY);
            im[1][p] = R(0.5) * (mirrorX - x);
        }
        for (std::size_t part = 0; part < 2; ++part) {
            transpose<R>(re[part]);
            transpose<R>(im[part]);
            for (std::size_t row = part; row < count; row += 2)
                Parts<R>{re[part][row / 2], im[part][row / 2]}.store(
                    reinterpret_cast<R*>(spectra + row * width + begin), points);
        }
    });
}

/// The whole spectra of pairs from the half spectra of `count` rows. The imaginary parts that the spectrum of real data
/// does not have are taken as 0.
template <typename R>
void joinRowPairs(const std::complex<R>* spectra, std::size_t width, std::size_t count, R* panel, std::size_t n) {
    constexpr std::size_t lines = panelLines<R>, step = panelStep<R>;
    forEachStretch<R>(width, [&](std::size_t begin, std::size_t points) {
        Lanes<R> re[2][lines]{}, im[2][lines]{};
        for (std::size_t part = 0; part < 2; ++part) {
            for (std::size_t row = part; row < count; row += 2) {
                const auto* const from = reinterpret_cast<const R*>(spectra + row * width + begin);
                const Parts<R> numbers = Parts<R>::load(from, points);
                re[part][row / 2] = numbers.re;
                im[part][row / 2] = numbers.im;
            }
            transpose<R>(re[part]);
            transpose<R>(im[part]);
        }
        for (std::size_t p = 0; p < points; ++p) {
            const std::size_t k = begin + p;
            if (k == 0 || 2 * k == n) im[0][p] = im[1][p] = Lanes<R>{};
            R* const z = panel + k * step;
            R* const mirror = panel + (k == 0 ? 0 : n - k) * step;
            storeLanes(re[0][p] + im[1][p], mirror);
            storeLanes(re[1][p] - im[0][p], mirror + lines);
            storeLanes(re[0][p] - im[1][p], z);
            storeLanes(im[0][p] + re[1][p], z + lines);
        }
    });
}

}  // namespace zel::host
