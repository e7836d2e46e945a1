#include "Fft/FftwLines.h"

#include <fftw3.h>

#include <mutex>
#include <new>

namespace zel::host {
namespace {

/// FFTW's planner is not made for several threads; its transforms are.
constinit std::mutex planner;

template <typename R>
struct Fftw;

#define ZEL_FFTW(Real, prefix)                                   \
    template <>                                                  \
    struct Fftw<Real> {                                          \
        using Plan = prefix##_plan;                              \
        using Complex = prefix##_complex;                        \
        static constexpr auto plan = prefix##_plan_many_dft;     \
        static constexpr auto execute = prefix##_execute_dft;    \
        static constexpr auto destroy = prefix##_destroy_plan;   \
        static constexpr auto allocate = prefix##_alloc_complex; \
        static constexpr auto free = prefix##_free;              \
    };
ZEL_FFTW(float, fftwf)
ZEL_FFTW(double, fftw)
#undef ZEL_FFTW

/// An estimated plan: measured ones differ from run to run, and with them the last bits of the results.
template <typename R>
std::shared_ptr<void> makePlan(std::size_t length, FftDirection direction) {
    using Api = Fftw<R>;
    const int n = static_cast<int>(length);
    const int lines = panelLines<R>;
    const std::unique_ptr<typename Api::Complex, decltype(Api::free)> data(Api::allocate(length * panelLines<R>),
                                                                           Api::free);
    if (data == nullptr) throw std::bad_alloc();
    const std::lock_guard lock(planner);
    const auto plan = Api::plan(1, &n, lines, data.get(), nullptr, lines, 1, data.get(), nullptr, lines, 1,
                                static_cast<int>(direction), FFTW_ESTIMATE);
    if (plan == nullptr) throw std::bad_alloc();
    return {plan, [](void* made) {
                const std::lock_guard again(planner);
                Api::destroy(static_cast<typename Api::Plan>(made));
            }};
}

}  // namespace

template <typename R>
FftwLines<R>::FftwLines(std::size_t length, FftDirection direction)
    : length_(length), plan_(makePlan<R>(length, direction)) {}

template <typename R>
void FftwLines<R>::transform(R* panel) const {
    using Api = Fftw<R>;
    // FFTW has the two parts of a number side by side.
    for (std::size_t p = 0; p < length_; ++p) {
        R* const point = panel + p * panelStep<R>;
        Parts<R>{loadLanes(point), loadLanes(point + panelLines<R>)}.store(point);
    }
    auto* const data = reinterpret_cast<typename Api::Complex*>(panel);
    Api::execute(static_cast<typename Api::Plan>(plan_.get()), data, data);
    for (std::size_t p = 0; p < length_; ++p) {
        R* const point = panel + p * panelStep<R>;
        const Parts<R> parts = Parts<R>::load(point);
        storeLanes(parts.re, point);
        storeLanes(parts.im, point + panelLines<R>);
    }
}

template class FftwLines<float>;
template class FftwLines<double>;

}  // namespace zel::host
