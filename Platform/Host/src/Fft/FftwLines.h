#pragma once

#include <cstddef>
#include <memory>

#include "Fft/Panel.h"

namespace zel::host {

/// Transforms of lines of any length by FFTW, a panel at a time and in place.
template <typename R>
class FftwLines {
public:
    /// @throws std::bad_alloc when no plan can be made.
    FftwLines(std::size_t length, FftDirection direction);

    void transform(R* panel) const;

private:
    std::size_t length_;
    std::shared_ptr<void> plan_;
};

}  // namespace zel::host
