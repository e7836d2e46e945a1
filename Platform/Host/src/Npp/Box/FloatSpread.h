#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "Npp/Box/Box.h"

namespace zel::host {

/// The binary exponents of the finite pixels that are looked at.
class FloatSpread {
public:
    void add(const float* pixels, std::ptrdiff_t count) {
        const Magnitudes before = seen_;
        add(pixels, count, [](std::uint32_t magnitude) { return magnitude; });
        if (seen_.largest < infinity) return;
        seen_ = before;
        allFinite_ = false;
        add(pixels, count, [](std::uint32_t magnitude) { return magnitude < infinity ? magnitude : 0; });
    }

    void add(const FloatSpread& other) {
        seen_.largest = std::max(seen_.largest, other.seen_.largest);
        seen_.lowestBitLess1 = std::min(seen_.lowestBitLess1, other.seen_.lowestBitLess1);
        allFinite_ &= other.allFinite_;
    }

    bool allFinite() const { return allFinite_; }
    /// All pixels lie below 2^(this + 1) in magnitude.
    int exponent() const { return exponentOf(seen_.largest); }
    /// All pixels are multiples of 2^this.
    int unit() const { return exponentOf(seen_.lowestBitLess1 + 1); }

private:
    /// As the bits of floats, which stand in the order of these.
    struct Magnitudes {
        std::uint32_t largest = 0;
        std::uint32_t lowestBitLess1 = std::numeric_limits<std::uint32_t>::max();  // 0, which has no bit, comes last
    };
    static constexpr std::uint32_t infinity = 0x7F800000;

    template <typename Seen>
    void add(const float* pixels, std::ptrdiff_t count, const Seen& seen) {
        std::uint32_t largest = seen_.largest, lowest = seen_.lowestBitLess1;
#pragma omp simd reduction(max : largest) reduction(min : lowest)
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const std::uint32_t magnitude = seen(std::bit_cast<std::uint32_t>(pixels[i]) & 0x7FFFFFFF);
            largest = std::max(largest, magnitude);
            lowest = std::min(lowest, lowestBit(magnitude) - 1);
        }
        seen_ = {largest, lowest};
    }

    /// The lowest bit set in a float's value, or in its lower half where that is a power of two; 0 of 0. Without its
    /// lowest bit a mantissa leaves just that when subtracted; one that is 0 makes the exponent lose a bit instead.
    static std::uint32_t lowestBit(std::uint32_t magnitude) {
        return std::bit_cast<std::uint32_t>(std::bit_cast<float>(magnitude) -
                                            std::bit_cast<float>(magnitude & (magnitude - 1)));
    }

    static int exponentOf(std::uint32_t magnitude) {
        if (magnitude == 0) return -149;
        return magnitude >= 0x800000 ? static_cast<int>(magnitude >> 23) - 127 : std::bit_width(magnitude) - 150;
    }

    Magnitudes seen_;
    bool allFinite_ = true;
};

/// The exponents in each of some rows of a strip of columns. Rows are looked at one at a time, the next one asked for
/// ahead: the machine reads ahead by itself within a page only.
class RowSpreads {
public:
    RowSpreads(const BoxJob<float>& job, const SourceColumns& source, std::ptrdiff_t top, std::ptrdiff_t bottom)
        : job_(job), source_(source), first_(job.firstSrcRowUnder(top)), last_(job.lastSrcRowUnder(bottom - 1)) {
        spreads_.reserve(static_cast<std::size_t>(last_ - first_ + 1));
    }

    void lookAtNextRow() {
        constexpr std::ptrdiff_t piece = 256, cacheLine = 16;
        const std::ptrdiff_t y = first_ + std::ssize(spreads_);
        if (y > last_) return;
        const float* const row = job_.srcRow(y) + source_.first;
        const float* const below = job_.srcRow(y + 1) + source_.first;
        FloatSpread& spread = spreads_.emplace_back();
        for (std::ptrdiff_t x = 0; x < source_.count; x += piece) {
            const std::ptrdiff_t count = std::min(piece, source_.count - x);
            for (std::ptrdiff_t i = 0; i < count; i += cacheLine) __builtin_prefetch(below + x + i);
            spread.add(row + x, count);
        }
    }

    /// Of the pixels under the windows of output rows [top, bottom).
    FloatSpread under(std::ptrdiff_t top, std::ptrdiff_t bottom) {
        const std::ptrdiff_t from = job_.firstSrcRowUnder(top) - first_;
        const std::ptrdiff_t to = job_.lastSrcRowUnder(bottom - 1) - first_;
        while (std::ssize(spreads_) <= to) lookAtNextRow();
        FloatSpread all;
        for (std::ptrdiff_t i = from; i <= to; ++i) all.add(spreads_[static_cast<std::size_t>(i)]);
        return all;
    }

    /// Of a row of the image that was looked at.
    const FloatSpread& ofRow(std::ptrdiff_t y) const { return spreads_[static_cast<std::size_t>(y - first_)]; }

private:
    const BoxJob<float>& job_;
    const SourceColumns& source_;
    std::ptrdiff_t first_;
    std::ptrdiff_t last_;
    std::vector<FloatSpread> spreads_;
};

}  // namespace zel::host
