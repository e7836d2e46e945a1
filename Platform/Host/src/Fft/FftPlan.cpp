#include "Fft/FftPlan.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "Device/Allocations.h"
#include "Device/Devices.h"
#include "Device/Streams.h"

namespace zel::host {
namespace {

bool isDouble(cufftType type) {
    return type == CUFFT_D2Z || type == CUFFT_Z2D;
}
bool isForward(cufftType type) {
    return type == CUFFT_R2C || type == CUFFT_D2Z;
}
bool isKnown(cufftType type) {
    return isForward(type) || type == CUFFT_C2R || type == CUFFT_Z2D;
}

template <typename R>
auto makeTransform(const FftShape& shape, cufftType type) {
    return std::make_shared<const RealTransform<R>>(shape,
                                                    isForward(type) ? FftDirection::forward : FftDirection::inverse);
}

bool overlap(const void* a, std::size_t aBytes, const void* b, std::size_t bBytes) {
    const auto* const first = static_cast<const std::byte*>(a);
    const auto* const second = static_cast<const std::byte*>(b);
    return std::less<>()(first, second + bBytes) && std::less<>()(second, first + aBytes);
}

}  // namespace

cufftResult workAreaBytes(const FftSizes& sizes, cufftType type, std::size_t& bytes) {
    if (!isKnown(type)) return CUFFT_INVALID_TYPE;
    const int maxLength = isDouble(type) ? 1 << 26 : 1 << 27;
    if (std::min({sizes.nx, sizes.ny, sizes.nz}) < 1 || std::max({sizes.nx, sizes.ny, sizes.nz}) > maxLength)
        return CUFFT_INVALID_SIZE;
    std::size_t result = isDouble(type) ? sizeof(double2) : sizeof(float2);
    for (const int length : {sizes.nx / 2 + 1, sizes.ny, sizes.nz})
        if (__builtin_mul_overflow(result, static_cast<std::size_t>(length), &result)) return CUFFT_INVALID_SIZE;
    bytes = result;
    return CUFFT_SUCCESS;
}

FftPlan::FftPlan() : device_(currentDevice()) {}

FftPlan::~FftPlan() {
    if (ownWorkArea_ != nullptr && isAlive()) allocations().free(ownWorkArea_);
}

bool FftPlan::allocateWorkArea(std::size_t bytes) {
    ownWorkArea_ = allocations().allocate({bytes, bytes}, device_);
    workArea_ = ownWorkArea_;
    return ownWorkArea_ != nullptr;
}

cufftResult FftPlan::make(const FftSizes& sizes, cufftType type, std::size_t& workBytes) {
    if (!std::holds_alternative<std::monostate>(transform_)) return CUFFT_INVALID_PLAN;
    if (const cufftResult status = workAreaBytes(sizes, type, workBytes); status != CUFFT_SUCCESS) return status;
    const FftShape shape{static_cast<std::size_t>(sizes.nx), static_cast<std::size_t>(sizes.ny),
                         static_cast<std::size_t>(sizes.nz)};
    decltype(transform_) made;
    if (isDouble(type))
        made = makeTransform<double>(shape, type);
    else
        made = makeTransform<float>(shape, type);
    if (autoAllocation_ && !allocateWorkArea(workBytes)) return CUFFT_ALLOC_FAILED;
    type_ = type;
    shape_ = shape;
    transform_ = std::move(made);
    return CUFFT_SUCCESS;
}

template <typename R>
cufftResult FftPlan::execute(cufftType type, R* real, std::complex<R>* spectrum) {
    const auto* const transform = std::get_if<Transform<R>>(&transform_);
    if (transform == nullptr || type != type_) return CUFFT_INVALID_PLAN;
    if (device_ != currentDevice()) return CUFFT_INVALID_DEVICE;
    if (workArea_ == nullptr) return CUFFT_NO_WORKSPACE;
    const std::size_t realBytes = shape_.reals() * sizeof(R);
    const std::size_t spectrumBytes = shape_.spectrumElements() * sizeof(std::complex<R>);
    if (!isReachable(real, realBytes) || !isReachable(spectrum, spectrumBytes)) return CUFFT_INVALID_VALUE;
    if (overlap(real, realBytes, spectrum, spectrumBytes)) return CUFFT_NOT_SUPPORTED;
    if (!isReachable(workArea_, spectrumBytes)) return CUFFT_EXEC_FAILED;
    enqueue(stream_, [kept = *transform, forward = isForward(type), real, spectrum] {
        if (forward)
            kept->forward(real, spectrum);
        else
            kept->inverse(spectrum, real);
    });
    return CUFFT_SUCCESS;
}

template cufftResult FftPlan::execute(cufftType, float*, std::complex<float>*);
template cufftResult FftPlan::execute(cufftType, double*, std::complex<double>*);

}  // namespace zel::host
