#pragma once

#include <nppdefs.h>

#include <cstddef>
#include <optional>
#include <vector>

#include "Npp/Morphology/Element3x3.h"

namespace zel::host {

/// Offsets along one axis from the output pixel: `size` of them from -before on, 0 among them.
struct MaskWindow {
    std::ptrdiff_t before;
    std::ptrdiff_t size;

    bool operator==(const MaskWindow&) const = default;
};

/// Neighbours on one row: the offsets (x, y) ... (x + length - 1, y) from the output pixel.
struct MaskRun {
    std::ptrdiff_t x;
    std::ptrdiff_t y;
    std::ptrdiff_t length;

    bool operator==(const MaskRun&) const = default;
};

/// The pixels that a mask selects around an output pixel. Offsets that lead beyond the image from wherever in it are
/// shortened to those that just reach its edge, so that masks of any size stay within twice the image.
class StructuringElement {
public:
    /// @param mask   rows of size.width bytes without padding; byte (i, j) that is not 0 selects the pixel i - anchor.x
    ///               to the right of the output pixel and j - anchor.y below it.
    /// @param image  size of the source image.
    StructuringElement(const Npp8u* mask, NppiSize size, NppiPoint anchor, NppiSize image);

    /// From top to bottom, from left to right. None overlap unless they were shortened.
    const std::vector<MaskRun>& runs() const { return runs_; }
    /// The smallest windows that hold all runs and the output pixel.
    const MaskWindow& windowX() const { return windowX_; }
    const MaskWindow& windowY() const { return windowY_; }

    /// The element of radius 1 that this is, if it is one.
    std::optional<Element3x3> as3x3() const;
    /// Whether the windows are selected throughout.
    bool isRectangle() const { return isRectangle_; }

private:
    void addRow(const Npp8u* row, int width, std::ptrdiff_t anchor, std::ptrdiff_t y, std::ptrdiff_t maxOffset);
    bool fillsWindows() const;

    std::vector<MaskRun> runs_;
    MaskWindow windowX_;
    MaskWindow windowY_;
    bool isRectangle_;
};

}  // namespace zel::host
