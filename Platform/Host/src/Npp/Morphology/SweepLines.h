#pragma once

#include <algorithm>
#include <cstddef>

#include "Npp/Common/WorkBuffer.h"
#include "Npp/Morphology/Slabs.h"

namespace zel::host {

/// The rows that the sweep of a slab reads, as lines of keys, for one strip of columns after the other. A line begins
/// `margin` columns before its strip and ends as many behind it; beyond the image it holds `none`.
template <typename Order>
class SweepLines {
public:
    using Key = typename Order::Key;
    using Pixel = typename Order::Pixel;

    /// Columns of a strip whose lines stay in the cache, but not so few that most of a line is margin.
    static std::ptrdiff_t usefulStripWidth(const SweepImages& images, std::ptrdiff_t margin) {
        constexpr std::ptrdiff_t usual = 8192 / sizeof(Key);
        return std::min<std::ptrdiff_t>(std::max(usual, 4 * margin), images.size.width);
    }
    /// Keys from one line to the next.
    static std::ptrdiff_t stride(std::ptrdiff_t stripWidth, std::ptrdiff_t margin) {
        constexpr std::ptrdiff_t unit = WorkBuffer::alignment / sizeof(Key);
        return (stripWidth + 2 * margin + unit - 1) / unit * unit;
    }

    static std::size_t bytesFor(const Slab& slab, std::ptrdiff_t margin) {
        return WorkBuffer::bytesFor<Key>(besideKeys(slab, margin));
    }
    SweepLines(WorkBuffer& buffer, const SweepImages& images, const Slab& slab, std::ptrdiff_t margin)
        : images_(images), slab_(slab), margin_(margin), beside_(buffer.take<Key>(besideKeys(slab, margin))) {}

    /// sweepStrip(left, right) for strips from left to right that cover the image, all but the last of that width.
    template <typename SweepStrip>
    void forEachStrip(std::ptrdiff_t width, const SweepStrip& sweepStrip) const {
        for (std::ptrdiff_t left = 0; left < images_.size.width; left += width) {
            sweepStrip(left, std::min<std::ptrdiff_t>(left + width, images_.size.width));
        }
    }

    /// Each row once a strip, from slab.top - margin on: where the source is a target too, it may be written as soon as
    /// the row has been loaded.
    void load(std::ptrdiff_t y, std::ptrdiff_t left, std::ptrdiff_t right, Key* line) const {
        Key* const end = line + (right - left) + 2 * margin_;
        if (y < 0 || y >= images_.size.height) return std::fill(line, end, Order::none);
        // What the last strip has left of the row in memory may be a result.
        Key* const beside = beside_ + (y - slab_.top + margin_) * margin_;
        if (left == 0)
            std::fill_n(line, margin_, Order::none);
        else
            std::copy_n(beside, margin_, line);
        const Pixel* const pixels = row(y);
        const std::ptrdiff_t readEnd = std::min<std::ptrdiff_t>(right + margin_, images_.size.width);
        toKeys(pixels + left, readEnd - left, row(std::min(y + 2, slab_.bottom + margin_ - 1)) + left, line + margin_);
        std::fill(line + margin_ + (readEnd - left), end, Order::none);
        if (right != images_.size.width) std::copy_n(line + (right - left), margin_, beside);
    }

private:
    static std::size_t besideKeys(const Slab& slab, std::ptrdiff_t margin) {
        return static_cast<std::size_t>((slab.bottom - slab.top + 2 * margin) * margin);
    }

    /// @param next  pixels that are needed soon: the processor does not see beforehand where the next row's are.
    static void toKeys(const Pixel* pixels, std::ptrdiff_t count, const Pixel* next, Key* __restrict keys) {
        constexpr std::ptrdiff_t cacheLine = 64 / sizeof(Pixel);
        std::ptrdiff_t x = 0;
        for (; x + cacheLine <= count; x += cacheLine) {
            __builtin_prefetch(next + x);
#pragma omp simd
            for (std::ptrdiff_t k = x; k < x + cacheLine; ++k) keys[k] = Order::keyOf(pixels[k]);
        }
        for (; x < count; ++x) keys[x] = Order::keyOf(pixels[x]);
    }

    const Pixel* row(std::ptrdiff_t y) const {
        if (y < slab_.top) return slab_.above.row<Pixel>(y - slab_.top + margin_);
        return y < slab_.bottom ? images_.from.row<Pixel>(y) : slab_.below.row<Pixel>(y - slab_.bottom);
    }

    const SweepImages& images_;
    Slab slab_;
    std::ptrdiff_t margin_;
    Key* beside_;  ///< for each row, the last columns of the strip before
};

}  // namespace zel::host
