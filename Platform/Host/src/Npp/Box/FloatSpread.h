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
        std::uint32_t largest = 0, smallest = none;
#pragma omp simd reduction(max : largest) reduction(min : smallest)
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const std::uint32_t magnitude = magnitudeOf(pixels[i]);
            largest = std::max(largest, magnitude);
            smallest = std::min(smallest, magnitude - 1);
        }
        if (largest >= infinity) {
            allFinite_ = false;
            largest = largestFinite(pixels, count);
        }
        largest_ = std::max(largest_, largest);
        smallestLess1_ = std::min(smallestLess1_, smallest);
    }

    void add(const FloatSpread& other) {
        largest_ = std::max(largest_, other.largest_);
        smallestLess1_ = std::min(smallestLess1_, other.smallestLess1_);
        allFinite_ &= other.allFinite_;
    }

    bool allFinite() const {
        return allFinite_;
    }
    /// All pixels lie below 2^(this + 1) in magnitude.
    int exponent() const {
        return exponentOf(largest_);
    }
    /// All pixels are multiples of 2^this: the last place of the smallest one that is not 0.
    int unit() const {
        return exponentOf(smallestLess1_ == none ? infinity : smallestLess1_ + 1) - 23;
    }

private:
    // Magnitudes as their bits, which stand in the order of the floats.
    static constexpr std::uint32_t infinity = 0x7F800000;
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    static std::uint32_t magnitudeOf(float pixel) {
        return std::bit_cast<std::uint32_t>(pixel) & 0x7FFFFFFF;
    }

    static std::uint32_t largestFinite(const float* pixels, std::ptrdiff_t count) {
        std::uint32_t largest = 0;
#pragma omp simd reduction(max : largest)
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const std::uint32_t magnitude = magnitudeOf(pixels[i]);
            largest = std::max(largest, magnitude < infinity ? magnitude : 0);
        }
        return largest;
    }

    /// That of subnormal numbers is the lowest one of normal numbers, whose last place is theirs too.
    static int exponentOf(std::uint32_t magnitude) {
        return std::max(static_cast<int>(magnitude >> 23), 1) - 127;
    }

    std::uint32_t largest_ = 0;
    std::uint32_t smallestLess1_ = none;  // less 1, so that 0, which has no digits, comes last
    bool allFinite_ = true;
};

/// The exponents in each of some rows of a strip of columns. Rows are looked at one after the other, when they are
/// asked for; the next one is then fetched ahead: the machine reads ahead by itself within a page only.
class RowSpreads {
public:
    RowSpreads(const BoxJob<float>& job, const SourceColumns& source, std::ptrdiff_t top, std::ptrdiff_t bottom)
        : job_(job), source_(source), first_(job.firstSrcRowUnder(top)) {
        spreads_.reserve(static_cast<std::size_t>(job.lastSrcRowUnder(bottom - 1) - first_ + 1));
    }

    /// Of a row of the image.
    const FloatSpread& ofRow(std::ptrdiff_t y) {
        while (std::ssize(spreads_) <= y - first_) lookAtNextRow();
        return spreads_[static_cast<std::size_t>(y - first_)];
    }

    /// Of the rows under the windows of output rows [top, bottom).
    FloatSpread under(std::ptrdiff_t top, std::ptrdiff_t bottom) {
        FloatSpread all;
        for (std::ptrdiff_t y = job_.firstSrcRowUnder(top); y <= job_.lastSrcRowUnder(bottom - 1); ++y) {
            all.add(ofRow(y));
        }
        return all;
    }

private:
    void lookAtNextRow() {
        constexpr std::ptrdiff_t piece = 256, cacheLine = 16;
        const std::ptrdiff_t y = first_ + std::ssize(spreads_);
        const float* const row = job_.srcRow(y) + source_.first;
        const float* const below = job_.srcRow(y + 1) + source_.first;
        FloatSpread& spread = spreads_.emplace_back();
        for (std::ptrdiff_t x = 0; x < source_.count; x += piece) {
            const std::ptrdiff_t count = std::min(piece, source_.count - x);
            for (std::ptrdiff_t i = 0; i < count; i += cacheLine) __builtin_prefetch(below + x + i);
            spread.add(row + x, count);
        }
    }

    const BoxJob<float>& job_;
    const SourceColumns& source_;
    std::ptrdiff_t first_;
    std::vector<FloatSpread> spreads_;
};

}  // namespace zel::host
