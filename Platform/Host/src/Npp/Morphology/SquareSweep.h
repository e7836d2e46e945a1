#pragma once

#include <algorithm>
#include <cstddef>

#include "Npp/Common/StoreLine.h"
#include "Npp/Common/WorkBuffer.h"
#include "Npp/Morphology/Slabs.h"
#include "Npp/Morphology/SweepLines.h"
#include "Npp/Morphology/WindowBests.h"

namespace zel::host {

/// Passes by the square, of a slab.
///
/// All but the last one come to a window of columns and one of rows. The window of rows is made of two parts, by van
/// Herk, Gil and Werman: rows are taken in blocks of the window's size, and each window is the end of one block and the
/// beginning of the next. The bests of all ends are worked out when a block is complete, those of the beginnings as
/// rows come: a few operations a pixel, whatever the size. The last pass takes four squares around each pixel.
template <typename Order>
class SquareSweep {
public:
    using Key = typename Order::Key;
    using Pixel = typename Order::Pixel;

    SquareSweep(const SweepImages& images, const Slab& slab, std::ptrdiff_t passes)
        : images_(images),
          slab_(slab),
          margin_(passes),
          window_(2 * passes - 1),
          stripWidth_(SweepLines<Order>::usefulStripWidth(images, margin_)),
          stride_(SweepLines<Order>::stride(stripWidth_, margin_)),
          buffer_(SweepLines<Order>::bytesFor(slab, margin_) + WorkBuffer::bytesFor<Key>(keys())),
          lines_(buffer_, images, slab, margin_),
          arrays_(buffer_.take<Key>(keys())) {}

    void run() const {
        lines_.forEachStrip(stripWidth_, [this](auto left, auto right) { sweepStrip(left, right); });
    }

private:
    std::size_t keys() const { return static_cast<std::size_t>((window_ + 4) * stride_); }

    // What the arrays hold of a row begins one column before the strip and ends one behind it.
    Key* beginning() const { return arrays_; }
    /// @param y  from slab_.top - 1 on.
    Key* bests(std::ptrdiff_t y) const { return arrays_ + (1 + (y + 3 - slab_.top) % 3) * stride_; }
    Key* block(std::ptrdiff_t row) const { return arrays_ + (4 + row) * stride_; }

    void sweepStrip(std::ptrdiff_t left, std::ptrdiff_t right) const {
        const std::ptrdiff_t width = right - left, first = slab_.top - margin_;
        for (std::ptrdiff_t y = first; y < slab_.bottom + margin_; ++y) {
            const std::ptrdiff_t row = (y - first) % window_;
            lines_.load(y, left, right, block(row));
            windowBests<Order>(block(row), width + 2, 1, window_);
            const std::ptrdiff_t done = y - margin_ + 1;
            addRow(row, bests(std::max(done, slab_.top - 1)), width + 2);
            if (done >= slab_.top && done < slab_.bottom) {
                storeLine(storesBeforeLast_, images_.beforeLast.row<Pixel>(done) + left, width,
                          [keys = bests(done) + 1](auto x) { return Order::pixelOf(keys[x]); });
            }
            if (done > slab_.top)
                lastPass(bests(done - 2), bests(done), images_.last.row<Pixel>(done - 1) + left, width);
        }
    }

    /// Adds a row to its block, and gives the bests of the window that ends with it. In the first block there is none
    /// before the last row.
    void addRow(std::ptrdiff_t row, Key* __restrict bests, std::ptrdiff_t width) const {
        const Key* const line = block(row);
        Key* __restrict const beginning = this->beginning();
        if (row == 0) std::fill_n(beginning, width, Order::none);
        if (row == window_ - 1) {
#pragma omp simd
            for (std::ptrdiff_t x = 0; x < width; ++x) bests[x] = Order::best(beginning[x], line[x]);
            for (std::ptrdiff_t above = row - 1; above > 0; --above) bestsOfEnd(above, width);
            return;
        }
        const Key* const end = block(row + 1);
#pragma omp simd
        for (std::ptrdiff_t x = 0; x < width; ++x) {
            const Key best = Order::best(beginning[x], line[x]);
            beginning[x] = best;
            bests[x] = Order::best(end[x], best);
        }
    }

    void bestsOfEnd(std::ptrdiff_t row, std::ptrdiff_t width) const {
        Key* __restrict const from = block(row);
        const Key* const below = block(row + 1);
#pragma omp simd
        for (std::ptrdiff_t x = 0; x < width; ++x) from[x] = Order::best(from[x], below[x]);
    }

    void lastPass(const Key* above, const Key* below, Pixel* dst, std::ptrdiff_t width) const {
        storeLine(storesLast_, dst, width, [=](auto x) {
            const Key upper = Order::best(above[x], above[x + 2]);
            const Key lower = Order::best(below[x], below[x + 2]);
            return Order::pixelOf(Order::best(upper, lower));
        });
    }

    const SweepImages& images_;
    Stores storesBeforeLast_ = images_.storesTo(images_.beforeLast, sizeof(Pixel));
    Stores storesLast_ = images_.storesTo(images_.last, sizeof(Pixel));
    Slab slab_;
    std::ptrdiff_t margin_;
    std::ptrdiff_t window_;
    std::ptrdiff_t stripWidth_;
    std::ptrdiff_t stride_;
    WorkBuffer buffer_;
    SweepLines<Order> lines_;
    Key* arrays_;
};

}  // namespace zel::host
