#include "zel/KernelFactory.h"

#include <cmath>

#include "Helper/raise.h"

namespace zel::filtering::linear::kernel_factory {

namespace {

/// The centre is 1 for any deviation, also where its square is 0.
double gaussian(double offset, double standardDeviation) {
    if (offset == 0) return 1;
    return std::exp(-(offset * offset) / (2 * standardDeviation * standardDeviation));
}

}  // namespace

Kernel3D createGaussian1D(std::size_t size, double standardDeviation, KernelDirection3D direction) {
    if (size == 0 || !(standardDeviation >= 0) || !std::isfinite(standardDeviation)) {
        raise<RuntimeError>(
            "Core/src/KernelFactory", __LINE__, "A Gaussian of size ", size, " and standard deviation ",
            standardDeviation,
            " cannot be made; the size must be at least 1, the deviation a finite number of at least 0");
    }
    const double centre = static_cast<double>(size - 1) / 2;
    std::vector<double> coefficients(size);
    for (std::size_t i = 0; i < size; ++i) {
        coefficients[i] = gaussian(static_cast<double>(i) - centre, standardDeviation);
    }
    return {std::move(coefficients), direction};
}

}  // namespace zel::filtering::linear::kernel_factory
