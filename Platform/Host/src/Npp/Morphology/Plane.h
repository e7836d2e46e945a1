#pragma once

#include <nppdefs.h>

#include <cstddef>

namespace zel::host {

/// Rows of pixels in memory, `step` bytes from one to the next.
struct Plane {
    std::byte* first;
    std::ptrdiff_t step;

    bool operator==(const Plane&) const = default;

    template <typename Pixel>
    Pixel* row(std::ptrdiff_t y) const {
        return reinterpret_cast<Pixel*>(first + y * step);
    }
    /// Behind the last pixel of an image.
    const std::byte* end(NppiSize size, std::size_t pixelBytes) const {
        return first + (size.height - 1) * step + static_cast<std::ptrdiff_t>(size.width * pixelBytes);
    }
};

}  // namespace zel::host
