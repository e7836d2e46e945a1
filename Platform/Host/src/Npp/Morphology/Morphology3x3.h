#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <type_traits>

#include "Npp/Common/DealRows.h"
#include "Npp/Common/FilterJob.h"
#include "Npp/Common/StoreLine.h"
#include "Npp/Common/WorkBuffer.h"
#include "Npp/Morphology/Element3x3.h"

namespace zel::host {

// Erosion or dilation by the two elements of radius 1, which larger ones are made of pass by pass: close to the speed
// of a copy, since a pass is little more than one.

namespace detail {

/// Room for what the latest three source rows have come to.
template <typename Key>
class RowRing {
public:
    RowRing(WorkBuffer& buffer, std::ptrdiff_t columns) {
        for (Key*& row : rows_) row = buffer.take<Key>(static_cast<std::size_t>(columns));
    }
    static std::size_t bytesFor(std::ptrdiff_t columns) {
        return 3 * WorkBuffer::bytesFor<Key>(static_cast<std::size_t>(columns));
    }

    /// @param y  at least -1.
    Key* row(std::ptrdiff_t y) const { return rows_[static_cast<std::size_t>(y + 1) % rows_.size()]; }

private:
    std::array<Key*, 3> rows_{};
};

/// dst[x] = best(left, here, right) for output columns x = 0 ... count - 1, of the source columns under the pixel and
/// its neighbours. At the image's edge the pixel stands for the neighbour beyond it. The function is a copy: bytes that
/// are written could be part of anything that has an address.
template <typename T, typename Best>
[[gnu::always_inline]] inline void storeBests(Stores stores, T* dst, const SourceColumns& source, std::ptrdiff_t count,
                                              Best best) {
    const std::ptrdiff_t begin = source.padLeft, end = count - source.padRight, last = source.count - 1;
    storeLine(stores, dst + begin, end - begin, [=](auto x) { return best(x, x + 1, x + 2); });
    if (source.padLeft == 1) dst[0] = best(0, 0, std::min<std::ptrdiff_t>(1, last));
    if (source.padRight == 1) dst[count - 1] = best(std::max<std::ptrdiff_t>(last - 1, 0), last, last);
}

/// A strip of an image's output columns, filtered from row to row.
template <typename Order>
class Strip {
public:
    using Key = typename Order::Key;

    Strip(const FilterJob<typename Order::Pixel>& job, std::ptrdiff_t left, std::ptrdiff_t right)
        : job_(job),
          left_(left),
          count_(right - left),
          source_(job, Window{}, left, right),
          buffer_(RowRing<Key>::bytesFor(source_.count) + RowRing<Key>::bytesFor(count_)),
          keys_(buffer_, source_.count),
          bests_(buffer_, count_) {}

    /// Each source row's bests of three columns serve three output rows.
    void filterBySquare(std::ptrdiff_t top, std::ptrdiff_t bottom) const {
        const auto bestsOfThree = [&](std::ptrdiff_t y) {
            const Key* const row = keysOf(y);
            Key* const bests = bests_.row(y);
            storeBests(Stores::cached, bests, source_, count_, [=](auto left, auto here, auto right) {
                return Order::best(Order::best(row[left], row[right]), row[here]);
            });
            return static_cast<const Key*>(bests);
        };
        const Key* above = bestsOfThree(top - 1);
        const Key* here = bestsOfThree(top);
        for (std::ptrdiff_t y = top; y < bottom; ++y) {
            const Key* const below = bestsOfThree(y + 1);
            storeLine(stores_, job_.dstRow(y) + left_, count_,
                      [=](auto x) { return Order::pixelOf(Order::best(Order::best(above[x], below[x]), here[x])); });
            above = here;
            here = below;
        }
    }

    void filterByCross(std::ptrdiff_t top, std::ptrdiff_t bottom) const {
        const Key* above = keysOf(top - 1);
        const Key* row = keysOf(top);
        for (std::ptrdiff_t y = top; y < bottom; ++y) {
            const Key* const below = keysOf(y + 1);
            auto* const dst = job_.dstRow(y) + left_;
            storeBests(stores_, dst, source_, count_, [=](auto left, auto here, auto right) {
                const Key vertical = Order::best(above[here], below[here]);
                const Key horizontal = Order::best(row[left], row[right]);
                return Order::pixelOf(Order::best(Order::best(vertical, horizontal), row[here]));
            });
            above = row;
            row = below;
        }
    }

private:
    struct Window {
        std::ptrdiff_t before = 1;
        std::ptrdiff_t size = 3;
    };

    /// The source row at output row y. Pixels that are their own keys are taken from where they are, others are turned
    /// into keys once.
    const Key* keysOf(std::ptrdiff_t y) const {
        const auto* const row = job_.srcRow(job_.offset.y + y) + source_.first;
        if constexpr (std::is_same_v<Key, typename Order::Pixel>) {
            return row;
        } else {
            Key* const keys = keys_.row(y);
            std::transform(row, row + source_.count, keys, Order::keyOf);
            return keys;
        }
    }

    const FilterJob<typename Order::Pixel>& job_;
    std::ptrdiff_t left_;
    std::ptrdiff_t count_;
    Stores stores_ = storesFor(2 * job_.roiBytes());
    SourceColumns source_;
    WorkBuffer buffer_;
    RowRing<Key> keys_;
    RowRing<Key> bests_;
};

/// filterStrip(strip) for strips that cover a region. They are wide, since memory is read ahead along rows; the rows at
/// hand stay in the second-level cache.
template <typename Order, typename FilterStrip>
void forEachStrip(const FilterJob<typename Order::Pixel>& job, const FilterStrip& filterStrip) {
    constexpr std::ptrdiff_t stripWidth = 16384 / sizeof(typename Order::Key);
    for (std::ptrdiff_t left = 0; left < job.roi.width; left += stripWidth) {
        filterStrip(Strip<Order>(job, left, std::min<std::ptrdiff_t>(left + stripWidth, job.roi.width)));
    }
}

}  // namespace detail

/// Filters a region by an element of radius 1.
template <typename Order>
void filter3x3(const FilterJob<typename Order::Pixel>& job, Element3x3 element) {
    dealRows(job, 3, [&](auto begin, auto end) {
        detail::forEachStrip<Order>(job, [&](const auto& strip) {
            if (element == Element3x3::square)
                strip.filterBySquare(begin, end);
            else
                strip.filterByCross(begin, end);
        });
        endStreaming();
    });
}

}  // namespace zel::host
