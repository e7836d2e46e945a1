#include "Fft/SmoothLines.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "Fft/PrimeButterfly.h"

namespace zel::host {
namespace {

/// Those whose transforms are written out. Large ones first: few passes are what counts.
constexpr std::array<std::size_t, 7> radices = {9, 8, 7, 5, 4, 3, 2};
/// What is left of the length has no factor up to maxPrime.
std::vector<std::size_t> factorsOf(std::size_t length) {
    std::vector<std::size_t> factors, small;
    for (const std::size_t radix : radices)
        for (; length % radix == 0; length /= radix) small.push_back(radix);
    for (std::size_t radix = 11; radix <= maxPrime; radix += 2)
        for (; length % radix == 0; length /= radix) factors.push_back(radix);
    factors.insert(factors.end(), small.begin(), small.end());
    return factors;
}

/// @param count  transforms that lie one behind the other.
template <typename R, std::size_t radix, FftDirection direction>
void runPass(R* panel, std::size_t count, std::size_t parts, const R* twiddles) {
    using Point = PanelPoint<R>;
    const std::size_t distance = parts * panelStep<R>;
    for (std::size_t i = 0; i < count; ++i) {
        const R* twiddle = twiddles;
        for (std::size_t p = 0; p < parts; ++p) {
            R* const at = panel + (i * radix * parts + p) * panelStep<R>;
            Point points[radix];
            for (std::size_t k = 0; k < radix; ++k) points[k] = Point::load(at + k * distance);
            butterfly<direction>(points);
            points[0].store(at);
            for (std::size_t j = 1; j < radix; ++j, twiddle += 2)
                points[j].times(twiddle[0], twiddle[1]).store(at + j * distance);
        }
    }
}

/// The last pass: its factors are all 1.
template <typename R, std::size_t radix, FftDirection direction>
void runLastPass(R* panel, std::size_t count) {
    using Point = PanelPoint<R>;
    for (std::size_t i = 0; i < count; ++i) {
        R* const at = panel + i * radix * panelStep<R>;
        Point points[radix];
        for (std::size_t k = 0; k < radix; ++k) points[k] = Point::load(at + k * panelStep<R>);
        butterfly<direction>(points);
        for (std::size_t k = 0; k < radix; ++k) points[k].store(at + k * panelStep<R>);
    }
}

/// With a prime of any size.
template <typename R, FftDirection direction>
void runPrimePass(std::size_t prime, R* panel, std::size_t count, std::size_t parts, const R* twiddles,
                  const R* roots) {
    const std::size_t distance = parts * panelStep<R>;
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t p = 0; p < parts; ++p) {
            R* const at = panel + (i * prime * parts + p) * panelStep<R>;
            const R* const twiddle = twiddles + 2 * p * (prime - 1);
            primeButterfly<direction>(prime, at, distance, roots, [&](std::size_t j, const PanelPoint<R>& point) {
                if (j == 0)
                    point.store(at);
                else
                    point.times(twiddle[2 * j - 2], twiddle[2 * j - 1]).store(at + j * distance);
            });
        }
    }
}

template <typename R, FftDirection direction>
void runPass(std::size_t radix, R* panel, std::size_t count, std::size_t parts, const R* twiddles, const R* roots) {
    if (radix > radices.front()) return runPrimePass<R, direction>(radix, panel, count, parts, twiddles, roots);
    const auto run = [&]<std::size_t r>() {
        if (radix != r) return;
        if (parts == 1)
            runLastPass<R, r, direction>(panel, count);
        else
            runPass<R, r, direction>(panel, count, parts, twiddles);
    };
    [&]<std::size_t... i>(std::index_sequence<i...>) {
        (run.template operator()<radices[i]>(), ...);
    }
    (std::make_index_sequence<radices.size()>());
}

/// Points of a panel that the first cache holds.
template <typename R>
constexpr std::size_t cachedPoints = (std::size_t{32} << 10) / (panelStep<R> * sizeof(R));

}  // namespace

template <typename R>
bool SmoothLines<R>::suits(std::size_t length) {
    std::size_t product = 1;
    for (const std::size_t factor : factorsOf(length)) product *= factor;
    return product == length;
}

template <typename R>
SmoothLines<R>::SmoothLines(std::size_t length, FftDirection direction) : length_(length), direction_(direction) {
    const auto addRoot = [&](double angle) {
        factors_.push_back(static_cast<R>(std::cos(angle)));
        factors_.push_back(static_cast<R>(std::sin(angle)));
    };
    std::size_t parts = length;
    for (const std::size_t radix : factorsOf(length)) {
        parts /= radix;
        const std::size_t twiddles = factors_.size();
        const double unit = static_cast<int>(direction) * 2 * std::numbers::pi / static_cast<double>(parts * radix);
        for (std::size_t p = 0; p < parts; ++p)
            for (std::size_t j = 1; j < radix; ++j) addRoot(unit * static_cast<double>(p * j));
        passes_.push_back({radix, parts, twiddles, factors_.size()});
        if (radix <= radices.front()) continue;
        for (std::size_t power = 0; power < radix; ++power)
            addRoot(2 * std::numbers::pi * static_cast<double>(power) / static_cast<double>(radix));
    }
}

template <typename R>
std::vector<std::size_t> SmoothLines<R>::places() const {
    std::vector<std::size_t> places(length_);
    for (std::size_t k = 0; k < length_; ++k) {
        std::size_t rest = k;
        for (const Pass& pass : passes_) {
            places[k] += rest % pass.radix * pass.parts;
            rest /= pass.radix;
        }
    }
    return places;
}

template <typename R>
void SmoothLines<R>::transform(R* panel, std::size_t firstPass) const {
    const auto run = [&](const Pass& pass, std::size_t count) {
        const R* const twiddles = factors_.data() + pass.twiddles;
        const R* const roots = factors_.data() + pass.roots;
        if (direction_ == FftDirection::forward)
            runPass<R, FftDirection::forward>(pass.radix, panel, count, pass.parts, twiddles, roots);
        else
            runPass<R, FftDirection::inverse>(pass.radix, panel, count, pass.parts, twiddles, roots);
    };
    if (firstPass == passes_.size()) return;
    const Pass& first = passes_[firstPass];
    if (first.radix * first.parts > cachedPoints<R>) {
        run(first, 1);
        for (std::size_t j = 0; j < first.radix; ++j) transform(panel + j * first.parts * panelStep<R>, firstPass + 1);
        return;
    }
    std::size_t count = 1;
    for (std::size_t i = firstPass; i < passes_.size(); ++i) {
        run(passes_[i], count);
        count *= passes_[i].radix;
    }
}

template class SmoothLines<float>;
template class SmoothLines<double>;

}  // namespace zel::host
