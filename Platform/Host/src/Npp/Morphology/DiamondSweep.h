#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "Npp/Common/StoreLine.h"
#include "Npp/Common/WorkBuffer.h"
#include "Npp/Morphology/Slabs.h"
#include "Npp/Morphology/SweepLines.h"

namespace zel::host {

/// Passes by the cross, of a slab.
///
/// The best of a diamond is the best of four diamonds that are smaller by up to half, their centres moved along the
/// axes by the difference. So levels of radius 1, 2, 4, ... lead to any number of passes; the last two levels are those
/// that passes one by one would leave in memory. A row goes through all levels as soon as the rows are there that it
/// needs: of each level just these are kept, so that they stay in the second-level cache.
template <typename Order>
class DiamondSweep {
public:
    using Key = typename Order::Key;
    using Pixel = typename Order::Pixel;

    DiamondSweep(const SweepImages& images, const Slab& slab, std::ptrdiff_t passes)
        : images_(images),
          slab_(slab),
          margin_(passes),
          radii_(radiiUpTo(passes)),
          stripWidth_(SweepLines<Order>::usefulStripWidth(images, margin_)),
          stride_(SweepLines<Order>::stride(stripWidth_, margin_)),
          buffer_(SweepLines<Order>::bytesFor(slab, margin_) + WorkBuffer::bytesFor<Key>(keys())),
          lines_(buffer_, images, slab, margin_) {
        Key* rows = buffer_.take<Key>(keys());
        for (std::size_t level = 0; level != last(); rows += rowsOf(level++) * stride_) levels_.push_back(rows);
    }

    void run() const {
        lines_.forEachStrip(stripWidth_, [this](auto left, auto right) { sweepStrip(left, right); });
    }

private:
    /// 0, 1, 2, 4, ... and the last two.
    static std::vector<std::ptrdiff_t> radiiUpTo(std::ptrdiff_t passes) {
        std::vector<std::ptrdiff_t> radii{0};
        while (radii.back() != passes - 1) {
            radii.push_back(std::min(std::max<std::ptrdiff_t>(2 * radii.back(), 1), passes - 1));
        }
        radii.push_back(passes);
        return radii;
    }

    std::size_t last() const { return radii_.size() - 1; }
    /// Rows of a level that the next one needs.
    std::ptrdiff_t rowsOf(std::size_t level) const { return 2 * (radii_[level + 1] - radii_[level]) + 1; }
    std::ptrdiff_t rowsKept() const { return 2 * margin_ + static_cast<std::ptrdiff_t>(last()); }
    std::size_t keys() const { return static_cast<std::size_t>(rowsKept() * stride_); }

    Key* row(std::size_t level, std::ptrdiff_t y) const {
        return levels_[level] + (y - slab_.top + margin_) % rowsOf(level) * stride_;
    }

    void sweepStrip(std::ptrdiff_t left, std::ptrdiff_t right) const {
        const std::ptrdiff_t width = right - left, first = slab_.top - margin_;
        for (std::ptrdiff_t y = first; y < slab_.bottom + margin_; ++y) {
            lines_.load(y, left, right, row(0, y));
            // The row of each level for which all rows that it needs are there now.
            for (std::size_t level = 1; level != last() && y - first >= 2 * radii_[level]; ++level) {
                const std::ptrdiff_t begin = radii_[level], end = width + 2 * margin_ - radii_[level];
                storeLine(Stores::cached, row(level, y - radii_[level]) + begin, end - begin,
                          fromLevelBefore(level, y - radii_[level], begin));
            }
            if (const auto done = y - margin_ + 1; done >= slab_.top && done < slab_.bottom) {
                storeLine(storesBeforeLast_, images_.beforeLast.row<Pixel>(done) + left, width,
                          [keys = row(last() - 1, done) + margin_](auto x) { return Order::pixelOf(keys[x]); });
            }
            if (const auto done = y - margin_; done >= slab_.top) {
                storeLine(storesLast_, images_.last.row<Pixel>(done) + left, width,
                          [best = fromLevelBefore(last(), done, margin_)](auto x) { return Order::pixelOf(best(x)); });
            }
        }
    }

    /// The function that gives a row of a level from the one before, from a column on.
    auto fromLevelBefore(std::size_t level, std::ptrdiff_t y, std::ptrdiff_t begin) const {
        const std::ptrdiff_t distance = radii_[level] - radii_[level - 1];
        const Key* const above = row(level - 1, y - distance) + begin;
        const Key* const here = row(level - 1, y) + begin;
        const Key* const below = row(level - 1, y + distance) + begin;
        // At radius 1 the pixel itself comes in; later it is in each of the four.
        const std::ptrdiff_t fifth = level == 1 ? 0 : distance;
        return [=](std::ptrdiff_t x) {
            const Key vertical = Order::best(above[x], below[x]);
            const Key horizontal = Order::best(here[x - distance], here[x + distance]);
            return Order::best(Order::best(vertical, horizontal), here[x + fifth]);
        };
    }

    const SweepImages& images_;
    Stores storesBeforeLast_ = images_.storesTo(images_.beforeLast, sizeof(Pixel));
    Stores storesLast_ = images_.storesTo(images_.last, sizeof(Pixel));
    Slab slab_;
    std::ptrdiff_t margin_;
    std::vector<std::ptrdiff_t> radii_;
    std::ptrdiff_t stripWidth_;
    std::ptrdiff_t stride_;
    WorkBuffer buffer_;
    SweepLines<Order> lines_;
    std::vector<Key*> levels_;
};

}  // namespace zel::host
