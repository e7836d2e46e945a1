#include "Npp/Morphology/StructuringElement.h"

#include <algorithm>

namespace zel::host {
namespace {

constexpr MaskWindow window3{1, 3};

/// Offsets from `low` to `high`, and 0.
MaskWindow windowWithCentre(std::ptrdiff_t low, std::ptrdiff_t high) {
    const std::ptrdiff_t before = std::max<std::ptrdiff_t>(-low, 0);
    return {before, before + 1 + std::max<std::ptrdiff_t>(high, 0)};
}

}  // namespace

StructuringElement::StructuringElement(const Npp8u* mask, NppiSize size, NppiPoint anchor, NppiSize image) {
    const std::ptrdiff_t maxOffsetX = image.width - 1, maxOffsetY = image.height - 1;
    for (int j = 0; j < size.height; ++j) {
        const std::ptrdiff_t y = std::clamp<std::ptrdiff_t>(j - anchor.y, -maxOffsetY, maxOffsetY);
        addRow(mask + static_cast<std::ptrdiff_t>(j) * size.width, size.width, anchor.x, y, maxOffsetX);
    }
    std::ptrdiff_t left = 0, right = 0, top = 0, bottom = 0;
    for (const MaskRun& run : runs_) {
        left = std::min(left, run.x);
        right = std::max(right, run.x + run.length - 1);
        top = std::min(top, run.y);
        bottom = std::max(bottom, run.y);
    }
    windowX_ = windowWithCentre(left, right);
    windowY_ = windowWithCentre(top, bottom);
    isRectangle_ = fillsWindows();
}

void StructuringElement::addRow(const Npp8u* row, int width, std::ptrdiff_t anchor, std::ptrdiff_t y,
                                std::ptrdiff_t maxOffset) {
    const Npp8u* const end = row + width;
    const auto offset = [&](const Npp8u* at) { return std::clamp(at - row - anchor, -maxOffset, maxOffset); };
    for (const Npp8u* next = row; next != end;) {
        const Npp8u* const first = std::find_if(next, end, [](Npp8u byte) { return byte != 0; });
        if (first == end) return;
        next = std::find(first, end, Npp8u{0});
        const MaskRun run{offset(first), y, offset(next - 1) - offset(first) + 1};
        // Rows that were shortened to the same one.
        if (runs_.empty() || runs_.back() != run) runs_.push_back(run);
    }
}

bool StructuringElement::fillsWindows() const {
    if (static_cast<std::ptrdiff_t>(runs_.size()) != windowY_.size) return false;
    std::ptrdiff_t y = -windowY_.before;
    return std::all_of(runs_.begin(), runs_.end(), [&](const MaskRun& run) {
        return run == MaskRun{-windowX_.before, y++, windowX_.size};
    });
}

std::optional<Element3x3> StructuringElement::as3x3() const {
    if (isRectangle_ && windowX_ == window3 && windowY_ == window3) return Element3x3::square;
    if (runs_ == std::vector<MaskRun>{{0, -1, 1}, {-1, 0, 3}, {0, 1, 1}}) return Element3x3::cross;
    return std::nullopt;
}

}  // namespace zel::host
