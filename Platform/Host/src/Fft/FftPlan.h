#pragma once

#include <cufft.h>

#include <complex>
#include <cstddef>
#include <memory>
#include <variant>

#include "Device/Plans.h"
#include "Fft/RealTransform.h"

namespace zel::host {

/// Sizes in the order of the vendor's calls, the fastest axis last; 1 for an axis that does not exist.
struct FftSizes {
    int nz, ny, nx;
};

/// The spectrum's bytes, or why there can be no such plan.
cufftResult workAreaBytes(const FftSizes& sizes, cufftType type, std::size_t& bytes);

/// What a cufftHandle names.
class FftPlan {
public:
    FftPlan();
    ~FftPlan();
    FftPlan(const FftPlan&) = delete;
    FftPlan& operator=(const FftPlan&) = delete;

    bool isAlive() const { return token_.isAlive(); }
    void setAutoAllocation(bool on) { autoAllocation_ = on; }
    void setStream(cudaStream_t stream) { stream_ = stream; }
    void setWorkArea(void* area) { workArea_ = area; }

    /// Once. @param workBytes  gets the bytes of the work area.
    cufftResult make(const FftSizes& sizes, cufftType type, std::size_t& workBytes);
    /// Queues the transform, whose direction is the type's.
    template <typename R>
    cufftResult execute(cufftType type, R* real, std::complex<R>* spectrum);

private:
    template <typename R>
    using Transform = std::shared_ptr<const RealTransform<R>>;

    bool allocateWorkArea(std::size_t bytes);

    const PlanToken token_;
    const int device_;
    cudaStream_t stream_ = nullptr;
    bool autoAllocation_ = true;
    void* workArea_ = nullptr;
    void* ownWorkArea_ = nullptr;
    cufftType type_{};
    FftShape shape_{};
    std::variant<std::monostate, Transform<float>, Transform<double>> transform_;
};

}  // namespace zel::host
