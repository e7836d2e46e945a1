#pragma once

#include <numeric>
#include <optional>
#include <vector>

#include "Fft/FftwLines.h"
#include "Fft/SmoothLines.h"

namespace zel::host {

/// Lines after their transform: a point is found by its place.
template <typename R>
struct TransformedPanel {
    const R* panel;
    const std::size_t* places;

    const R* point(std::size_t k) const { return panel + places[k] * panelStep<R>; }
};

/// Unnormalised complex transforms of the lines of a panel: our own where the length allows, else FFTW's.
template <typename R>
class PanelTransform {
public:
    /// @throws std::bad_alloc
    PanelTransform(std::size_t length, FftDirection direction) {
        if (SmoothLines<R>::suits(length)) {
            smooth_.emplace(length, direction);
            places_ = smooth_->places();
        } else {
            fftw_.emplace(length, direction);
            places_.resize(length);
            std::iota(places_.begin(), places_.end(), std::size_t{0});
        }
    }

    std::size_t length() const { return places_.size(); }
    std::size_t panelBytes() const { return length() * panelStep<R> * sizeof(R); }

    /// In place.
    TransformedPanel<R> operator()(R* panel) const {
        if (smooth_)
            smooth_->transform(panel);
        else
            fftw_->transform(panel);
        return {panel, places_.data()};
    }

private:
    std::vector<std::size_t> places_;
    std::optional<SmoothLines<R>> smooth_;
    std::optional<FftwLines<R>> fftw_;
};

}  // namespace zel::host
