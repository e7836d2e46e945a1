#pragma once

#include <complex>
#include <cstddef>
#include <vector>

#include "Fft/PanelTransform.h"

namespace zel::host {

/// Real elements along x, which moves fastest, y and z.
struct FftShape {
    std::size_t nx, ny, nz;

    std::size_t rows() const { return ny * nz; }
    std::size_t reals() const { return nx * rows(); }
    std::size_t spectrumWidth() const { return nx / 2 + 1; }
    std::size_t spectrumElements() const { return spectrumWidth() * rows(); }
};

/// An unnormalised transform between packed real data and their packed half spectrum, on all threads. Lines are always
/// bundled the same way, so the bits do not depend on how many threads there are.
template <typename R>
class RealTransform {
public:
    using Complex = std::complex<R>;

    /// @throws std::bad_alloc
    RealTransform(const FftShape& shape, FftDirection direction);

    void forward(const R* real, Complex* spectrum) const;
    /// Overwrites the spectrum. The imaginary parts that the spectrum of real data does not have are taken as 0.
    void inverse(Complex* spectrum, R* real) const;

private:
    void transformColumns(Complex* spectrum) const;
    void transformAcrossSlices(Complex* spectrum) const;

    FftShape shape_;
    PanelTransform<R> rows_, columns_;
    std::vector<PanelTransform<R>> acrossSlices_;  ///< one, or none in 2D
};

}  // namespace zel::host
