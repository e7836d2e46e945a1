#include <cufft.h>

#include <map>
#include <mutex>

#include "Calls/VendorCall.h"
#include "Device/Devices.h"
#include "Device/Streams.h"
#include "Fft/FftPlan.h"

namespace zel::host {
namespace {

/// The plans by their handles. Never destroyed: plans may be given back by other libraries' destructors at exit.
class PlanTable {
public:
    cufftHandle add(std::shared_ptr<FftPlan> plan) {
        const std::lock_guard lock(mutex_);
        plans_.emplace(++lastHandle_, std::move(plan));
        return lastHandle_;
    }
    /// Null for a handle that names no plan.
    std::shared_ptr<FftPlan> find(cufftHandle handle) {
        const std::lock_guard lock(mutex_);
        const auto found = plans_.find(handle);
        return found != plans_.end() && found->second->isAlive() ? found->second : nullptr;
    }
    /// Gives the plan back.
    std::shared_ptr<FftPlan> remove(cufftHandle handle) {
        const std::lock_guard lock(mutex_);
        auto node = plans_.extract(handle);
        return node ? std::move(node.mapped()) : nullptr;
    }

private:
    std::mutex mutex_;
    std::map<cufftHandle, std::shared_ptr<FftPlan>> plans_;
    cufftHandle lastHandle_ = 0;
};

PlanTable& planTable() {
    static PlanTable& table = *new PlanTable;
    return table;
}

template <typename Body>
cufftResult fftCall(const char* name, const Body& body) {
    return vendorCall<CallFamily::cufft>(name, body);
}

/// A call on a plan.
template <typename Body>
cufftResult planCall(const char* name, cufftHandle handle, const Body& body) {
    return fftCall(name, [&] {
        const std::shared_ptr<FftPlan> plan = planTable().find(handle);
        return plan == nullptr ? CUFFT_INVALID_PLAN : body(*plan);
    });
}

cufftResult getSize(const char* name, cufftHandle handle, const FftSizes& sizes, cufftType type,
                    std::size_t* workSize) {
    return planCall(name, handle, [&](FftPlan&) {
        return workSize == nullptr ? CUFFT_INVALID_VALUE : workAreaBytes(sizes, type, *workSize);
    });
}

cufftResult makePlan(const char* name, cufftHandle handle, const FftSizes& sizes, cufftType type,
                     std::size_t* workSize) {
    return planCall(name, handle, [&](FftPlan& plan) {
        return workSize == nullptr ? CUFFT_INVALID_VALUE : plan.make(sizes, type, *workSize);
    });
}

template <typename R, typename Element>
cufftResult execute(const char* name, cufftHandle handle, cufftType type, R* real, Element* spectrum) {
    return planCall(name, handle, [&](FftPlan& plan) {
        return plan.execute(type, real, reinterpret_cast<std::complex<R>*>(spectrum));
    });
}

}  // namespace
}  // namespace zel::host

using namespace zel::host;

cufftResult cufftCreate(cufftHandle* plan) {
    return fftCall("cufftCreate", [&] {
        if (plan == nullptr) return CUFFT_INVALID_VALUE;
        if (checkCurrentDevice() != cudaSuccess) return CUFFT_SETUP_FAILED;
        *plan = planTable().add(std::make_shared<FftPlan>());
        return CUFFT_SUCCESS;
    });
}

cufftResult cufftSetAutoAllocation(cufftHandle plan, int autoAllocate) {
    return planCall("cufftSetAutoAllocation", plan, [&](FftPlan& found) {
        found.setAutoAllocation(autoAllocate != 0);
        return CUFFT_SUCCESS;
    });
}

cufftResult cufftSetStream(cufftHandle plan, cudaStream_t stream) {
    return planCall("cufftSetStream", plan, [&](FftPlan& found) {
        if (!isStream(stream)) return CUFFT_INVALID_VALUE;
        found.setStream(stream);
        return CUFFT_SUCCESS;
    });
}

cufftResult cufftGetSize2d(cufftHandle plan, int nx, int ny, cufftType type, std::size_t* workSize) {
    return getSize("cufftGetSize2d", plan, {1, nx, ny}, type, workSize);
}
cufftResult cufftGetSize3d(cufftHandle plan, int nx, int ny, int nz, cufftType type, std::size_t* workSize) {
    return getSize("cufftGetSize3d", plan, {nx, ny, nz}, type, workSize);
}

cufftResult cufftSetWorkArea(cufftHandle plan, void* workArea) {
    return planCall("cufftSetWorkArea", plan, [&](FftPlan& found) {
        found.setWorkArea(workArea);
        return CUFFT_SUCCESS;
    });
}

cufftResult cufftMakePlan2d(cufftHandle plan, int nx, int ny, cufftType type, std::size_t* workSize) {
    return makePlan("cufftMakePlan2d", plan, {1, nx, ny}, type, workSize);
}
cufftResult cufftMakePlan3d(cufftHandle plan, int nx, int ny, int nz, cufftType type, std::size_t* workSize) {
    return makePlan("cufftMakePlan3d", plan, {nx, ny, nz}, type, workSize);
}

cufftResult cufftExecR2C(cufftHandle plan, cufftReal* input, cufftComplex* output) {
    return execute("cufftExecR2C", plan, CUFFT_R2C, input, output);
}
cufftResult cufftExecC2R(cufftHandle plan, cufftComplex* input, cufftReal* output) {
    return execute("cufftExecC2R", plan, CUFFT_C2R, output, input);
}
cufftResult cufftExecD2Z(cufftHandle plan, cufftDoubleReal* input, cufftDoubleComplex* output) {
    return execute("cufftExecD2Z", plan, CUFFT_D2Z, input, output);
}
cufftResult cufftExecZ2D(cufftHandle plan, cufftDoubleComplex* input, cufftDoubleReal* output) {
    return execute("cufftExecZ2D", plan, CUFFT_Z2D, output, input);
}

cufftResult cufftDestroy(cufftHandle plan) {
    return releasingVendorCall<CallFamily::cufft>("cufftDestroy", [&] {
        const std::shared_ptr<FftPlan> removed = planTable().remove(plan);
        return removed != nullptr && removed->isAlive() ? CUFFT_SUCCESS : CUFFT_INVALID_PLAN;
    });
}
