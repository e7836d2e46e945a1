#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "Npp/Common/WorkBuffer.h"

namespace zel::host {

/// The pixels of a tile in the order of their keys, cut into 256 bins of as many pixels each: a pixel's bin is a byte
/// that stands for its key in histograms. Of a bin's pixels the coordinates are known in order, so that those within a
/// window are found by comparing them all.
///
/// @tparam Coordinate  unsigned, for columns and rows of the tile.
template <typename Key, typename Coordinate>
class RankedTile {
public:
    RankedTile(WorkBuffer& buffer, std::ptrdiff_t maxPixels)
        : bins_(buffer.template take<std::uint8_t>(items(maxPixels))),
          sorted_(buffer.template take<Entry>(items(maxPixels))),
          other_(buffer.template take<Entry>(items(maxPixels))),
          x_(buffer.template take<Coordinate>(items(maxPixels) + room)),
          y_(buffer.template take<Coordinate>(items(maxPixels) + room)) {}
    static std::size_t bytesFor(std::ptrdiff_t maxPixels) {
        return WorkBuffer::bytesFor<std::uint8_t>(items(maxPixels)) +
               2 * WorkBuffer::bytesFor<Entry>(items(maxPixels)) +
               2 * WorkBuffer::bytesFor<Coordinate>(items(maxPixels) + room);
    }

    /// @param readRow  readRow(y, keys) writes the keys of a row of the tile.
    template <typename ReadRow>
    void sort(std::ptrdiff_t width, std::ptrdiff_t height, Key* line, const ReadRow& readRow) {
        width_ = width;
        for (std::ptrdiff_t y = 0; y < height; ++y) {
            readRow(y, line);
            for (std::ptrdiff_t x = 0; x < width; ++x) {
                const std::ptrdiff_t i = y * width + x;
                sorted_[i] = {static_cast<Unsigned>(static_cast<Unsigned>(line[x]) ^ lowest),
                              static_cast<std::uint32_t>(i)};
            }
        }
        const std::ptrdiff_t count = width * height;
        sortEntries(count);
        // In whole words of flags, see find().
        binPixels_ = ((count + binCount - 1) / binCount + flagsAtOnce - 1) / flagsAtOnce * flagsAtOnce;
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const std::uint32_t pixel = sorted_[i].pixel;
            x_[i] = static_cast<Coordinate>(pixel % static_cast<std::uint32_t>(width));
            y_[i] = static_cast<Coordinate>(pixel / static_cast<std::uint32_t>(width));
        }
        for (std::ptrdiff_t first = 0, bin = 0; first < count; first += binPixels_, ++bin)
            for (std::ptrdiff_t i = first; i < std::min(first + binPixels_, count); ++i)
                bins_[sorted_[i].pixel] = static_cast<std::uint8_t>(bin);
        std::fill_n(x_ + count, room, Coordinate{0});
        std::fill_n(y_ + count, room, Coordinate{0});
    }

    const std::uint8_t* binsOfRow(std::ptrdiff_t y) const { return bins_ + y * width_; }

    /// The key of the bin's pixel that has `rank` others of the bin before it in the window from (x, y) on.
    Key find(std::uint8_t bin, std::size_t rank, Coordinate x, Coordinate y, Coordinate width,
             Coordinate height) const {
        const std::ptrdiff_t begin = bin * binPixels_;
        for (std::ptrdiff_t first = begin;; first += flagsAtOnce) {
            alignas(64) std::array<std::uint8_t, flagsAtOnce> isInside;
#pragma omp simd
            for (std::ptrdiff_t i = 0; i < flagsAtOnce; ++i) {
                const bool inX = static_cast<Coordinate>(x_[first + i] - x) < width;
                const bool inY = static_cast<Coordinate>(y_[first + i] - y) < height;
                isInside[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(inX & inY);
            }
            const auto words = std::bit_cast<std::array<std::uint64_t, flagsAtOnce / 8>>(isInside);
            std::size_t all = 0;
            for (const std::uint64_t word : words) all += static_cast<std::size_t>(std::popcount(word));
            if (all <= rank) {
                rank -= all;
                continue;
            }
            for (std::size_t w = 0;; ++w) {
                std::uint64_t word = words[w];
                const auto inWord = static_cast<std::size_t>(std::popcount(word));
                if (inWord <= rank) {
                    rank -= inWord;
                    continue;
                }
                for (; rank > 0; --rank) word &= word - 1;
                const auto index = first + static_cast<std::ptrdiff_t>(8 * w) + std::countr_zero(word) / 8;
                return static_cast<Key>(sorted_[index].key ^ lowest);
            }
        }
    }

private:
    using Unsigned = std::make_unsigned_t<Key>;
    /// Makes the order of signed keys that of unsigned ones.
    static constexpr auto lowest = static_cast<Unsigned>(std::numeric_limits<Key>::min());
    static constexpr std::ptrdiff_t binCount = 256;
    static constexpr std::ptrdiff_t flagsAtOnce = 64;
    static constexpr std::ptrdiff_t room = flagsAtOnce;

    struct Entry {
        Unsigned key;
        std::uint32_t pixel;
    };

    static std::size_t items(std::ptrdiff_t count) {
        return static_cast<std::size_t>(count);
    }

    /// By one byte of the keys after the other, the lowest first.
    void sortEntries(std::ptrdiff_t count) {
        for (unsigned shift = 0; shift < 8 * sizeof(Key); shift += 8) {
            std::array<std::uint32_t, 256> next{};
            const auto digit = [shift](const Entry& entry) { return (entry.key >> shift) & 255U; };
            for (std::ptrdiff_t i = 0; i < count; ++i) ++next[digit(sorted_[i])];
            std::uint32_t sum = 0;
            for (std::uint32_t& position : next) sum += std::exchange(position, sum);
            for (std::ptrdiff_t i = 0; i < count; ++i) other_[next[digit(sorted_[i])]++] = sorted_[i];
            std::swap(sorted_, other_);
        }
    }

    std::uint8_t* bins_;
    Entry* sorted_;
    Entry* other_;
    Coordinate* x_;
    Coordinate* y_;
    std::ptrdiff_t width_ = 0;
    std::ptrdiff_t binPixels_ = 0;
};

}  // namespace zel::host
