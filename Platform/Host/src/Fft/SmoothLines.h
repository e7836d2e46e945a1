#pragma once

#include <cstddef>
#include <vector>

#include "Fft/Panel.h"

namespace zel::host {

/// Transforms of lines whose length has no large prime factor, a panel at a time and in place: each register holds
/// one part of one point of all its lines.
template <typename R>
class SmoothLines {
public:
    static bool suits(std::size_t length);

    SmoothLines(std::size_t length, FftDirection direction);

    void transform(R* panel) const { transform(panel, 0); }
    /// Where in the panel each point of the result then stands.
    std::vector<std::size_t> places() const;

private:
    /// Makes a transform of radix * parts points into `radix` transforms of `parts` points, one behind the other; the
    /// j-th gives points j, j + radix, j + 2 radix ... of the result.
    struct Pass {
        std::size_t radix, parts;
        std::size_t twiddles;  ///< in factors_: what point j of part p is multiplied by, j = 1 ... radix - 1, then p
        std::size_t roots;     ///< in factors_: of a large prime radix, its roots of unity
    };

    void transform(R* panel, std::size_t firstPass) const;

    std::size_t length_;
    FftDirection direction_;
    std::vector<R> factors_;  ///< real part, imaginary part, ...
    std::vector<Pass> passes_;
};

}  // namespace zel::host
