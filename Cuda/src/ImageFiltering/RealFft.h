#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include <utility>

#include "FftUtilities_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::cuda {

/// The transforms of a working type: pixel of the spectrum, and the plans' types.
template <typename R>
struct RealFft;

template <>
struct RealFft<float> {
    using Spectrum = float2;
    static constexpr cufftType forward = CUFFT_R2C;
    static constexpr cufftType inverse = CUFFT_C2R;
};

template <>
struct RealFft<double> {
    using Spectrum = double2;
    static constexpr cufftType forward = CUFFT_D2Z;
    static constexpr cufftType inverse = CUFFT_Z2D;
};

template <typename R>
using SpectrumOf = typename RealFft<R>::Spectrum;

/// Bytes that transforms of a size need: their packed buffers, and the work area of plans of either direction.
template <typename R>
struct FftBytes {
    FftBytes(std::uint64_t nx, std::uint64_t ny, std::uint64_t nz)
        : real(nx * ny * nz * sizeof(R)),
          spectrum((nx / 2 + 1) * ny * nz * sizeof(SpectrumOf<R>)),
          forwardWork(fftWorkBytes(nx, ny, nz, RealFft<R>::forward)),
          inverseWork(fftWorkBytes(nx, ny, nz, RealFft<R>::inverse)) {}

    std::uint64_t real, spectrum, forwardWork, inverseWork;
};

// Each queues a transform on the plan's stream. An inverse transform may overwrite its spectrum.

inline void forwardFft(cufftHandle plan, float* real, float2* spectrum) {
    checkCufftStatus(cufftExecR2C(plan, real, spectrum));
}
inline void forwardFft(cufftHandle plan, double* real, double2* spectrum) {
    checkCufftStatus(cufftExecD2Z(plan, real, spectrum));
}
inline void inverseFft(cufftHandle plan, float2* spectrum, float* real) {
    checkCufftStatus(cufftExecC2R(plan, spectrum, real));
}
inline void inverseFft(cufftHandle plan, double2* spectrum, double* real) {
    checkCufftStatus(cufftExecZ2D(plan, spectrum, real));
}

/// Owns a plan.
class FftPlan {
public:
    FftPlan() = default;
    explicit FftPlan(cufftHandle plan) : plan_(plan), owned_(true) {}
    FftPlan(FftPlan&& other) noexcept : plan_(other.plan_), owned_(other.owned_) { other.owned_ = false; }
    FftPlan& operator=(FftPlan&& other) noexcept {
        std::swap(plan_, other.plan_);
        std::swap(owned_, other.owned_);
        return *this;
    }
    ~FftPlan() {
        if (owned_) cufftDestroy(plan_);  // its status is nobody's affair while unwinding
    }

    explicit operator bool() const { return owned_; }
    cufftHandle handle() const { return plan_; }
    /// Gives the plan back now. @throws RuntimeError when the library refuses; it is not asked again.
    void destroy() {
        owned_ = false;
        destroyFftPlan(plan_);
    }

private:
    cufftHandle plan_ = 0;
    bool owned_ = false;
};

}  // namespace zel::cuda
