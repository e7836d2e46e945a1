#pragma once

#include <algorithm>
#include <complex>
#include <cstddef>

#include "Fft/ComplexLines.h"

// Two real rows travel as the real and imaginary parts of one complex line: one transform for both, and as fast for odd
// lengths as for even ones. Row 2l and row 2l + 1 share line l of a panel. For real a and b with spectra A and B, the
// line z = a + ib has Z[k] = A[k] + iB[k], and conj(Z[n - k]) = A[k] - iB[k].
namespace zel::host {

/// Elements of a row that are moved at a time: those of a cache line.
template <typename R>
inline constexpr std::size_t rowStretch = 64 / sizeof(R);

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

/// Fills a panel with `count` packed rows of n numbers; lines without a row are 0.
/// @return false when all rows are 0; the panel is not filled then.
template <typename R>
bool packRowPairs(const R* rows, std::size_t n, std::size_t count, std::complex<R>* panel) {
    constexpr std::size_t side = panelLines<R>;
    if (isZero(rows, count * n)) return false;
    for (std::size_t begin = 0; begin < n; begin += rowStretch<R>) {
        const std::size_t end = std::min(n, begin + rowStretch<R>);
        for (std::size_t l = 0; l < side; ++l) {
            const R* const a = rows + 2 * l * n;
            const R* const b = a + n;
            for (std::size_t p = begin; p < end; ++p)
                panel[p * side + l] = {2 * l < count ? a[p] : R(0), 2 * l + 1 < count ? b[p] : R(0)};
        }
    }
    return true;
}

/// The half spectra of `count` rows from the transform of their pairs.
template <typename R>
void splitRowPairs(const std::complex<R>* panel, std::size_t n, std::complex<R>* spectra, std::size_t width,
                   std::size_t count) {
    constexpr std::size_t side = panelLines<R>;
    for (std::size_t begin = 0; begin < width; begin += rowStretch<R>) {
        const std::size_t end = std::min(width, begin + rowStretch<R>);
        for (std::size_t l = 0; 2 * l < count; ++l) {
            std::complex<R>* const a = spectra + 2 * l * width;
            std::complex<R>* const b = 2 * l + 1 < count ? a + width : nullptr;
            for (std::size_t k = begin; k < end; ++k) {
                const std::complex<R> z = panel[k * side + l], mirror = panel[(k == 0 ? 0 : n - k) * side + l];
                a[k] = {R(0.5) * (z.real() + mirror.real()), R(0.5) * (z.imag() - mirror.imag())};
                if (b != nullptr) b[k] = {R(0.5) * (z.imag() + mirror.imag()), R(0.5) * (mirror.real() - z.real())};
            }
        }
    }
}

/// The whole spectra of pairs from the half spectra of `count` rows.
template <typename R>
void joinRowPairs(const std::complex<R>* spectra, std::size_t width, std::size_t count, std::complex<R>* panel,
                  std::size_t n) {
    constexpr std::size_t side = panelLines<R>;
    for (std::size_t begin = 0; begin < width; begin += rowStretch<R>) {
        const std::size_t end = std::min(width, begin + rowStretch<R>);
        for (std::size_t l = 0; l < side; ++l) {
            const std::complex<R>* const a = spectra + 2 * l * width;
            const std::complex<R>* const b = a + width;
            for (std::size_t k = begin; k < end; ++k) {
                std::complex<R> va = 2 * l < count ? a[k] : std::complex<R>();
                std::complex<R> vb = 2 * l + 1 < count ? b[k] : std::complex<R>();
                if (k == 0 || 2 * k == n) va.imag(0), vb.imag(0);
                panel[(k == 0 ? 0 : n - k) * side + l] = {va.real() + vb.imag(), vb.real() - va.imag()};
                panel[k * side + l] = {va.real() - vb.imag(), va.imag() + vb.real()};
            }
        }
    }
}

/// The real rows of a panel.
template <typename R>
void unpackRowPairs(const std::complex<R>* panel, std::size_t n, R* rows, std::size_t count) {
    constexpr std::size_t side = panelLines<R>;
    for (std::size_t begin = 0; begin < n; begin += rowStretch<R>) {
        const std::size_t end = std::min(n, begin + rowStretch<R>);
        for (std::size_t l = 0; 2 * l < count; ++l) {
            R* const a = rows + 2 * l * n;
            for (std::size_t p = begin; p < end; ++p) a[p] = panel[p * side + l].real();
            if (2 * l + 1 == count) continue;
            for (std::size_t p = begin; p < end; ++p) a[n + p] = panel[p * side + l].imag();
        }
    }
}

}  // namespace zel::host
