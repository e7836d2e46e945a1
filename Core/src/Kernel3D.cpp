#include "zel/Kernel3D.h"

#include <cmath>
#include <numeric>

#include "Helper/raise.h"

namespace zel::filtering::linear {

Kernel3D::Kernel3D(std::vector<double> coefficients, KernelDirection3D direction)
    : coefficients_(std::move(coefficients)) {
    sizes_[static_cast<std::size_t>(direction)] = coefficients_.size();
}

void Kernel3D::normalize() {
    const double sum = std::accumulate(coefficients_.begin(), coefficients_.end(), 0.0);
    if (sum == 0 || !std::isfinite(sum)) {
        raise<RuntimeError>("Core/src/Kernel3D", __LINE__, "The coefficients of a kernel sum to ", sum,
                            "; they cannot be normalised");
    }
    for (double& coefficient : coefficients_) coefficient /= sum;
}

}  // namespace zel::filtering::linear
