#pragma once

#include <complex>
#include <cstddef>
#include <memory>

namespace zel::host {

/// Lines that are transformed side by side: as many as a cache line holds real numbers.
template <typename R>
inline constexpr std::size_t panelLines = 64 / sizeof(R);

enum class FftDirection { forward = -1, inverse = 1 };  ///< the sign of the exponent

/// Unnormalised complex transforms of panelLines lines of equal length at once, in place. Element p of line l stands at
/// panel[p * panelLines + l]; the panel is aligned to 64 bytes.
template <typename R>
class ComplexLines {
public:
    /// @throws std::bad_alloc when no plan can be made.
    ComplexLines(std::size_t length, FftDirection direction);

    std::size_t length() const { return length_; }
    std::size_t panelBytes() const { return length_ * panelLines<R> * sizeof(std::complex<R>); }
    void transform(std::complex<R>* panel) const;

private:
    std::size_t length_;
    std::shared_ptr<void> plan_;
};

}  // namespace zel::host
