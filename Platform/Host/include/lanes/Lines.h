#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "Block.h"
#include "Bundles.h"
#include "Share.h"
#include "host_runtime/Scratch.h"

// Words for kernels whose blocks walk over the lines of an image. blockBarrier() may stand inside their bodies.
namespace zel::cuda {

/// Calls body(o, l) for l = 0 ... count - 1 of each o = 0 ... outer - 1, dealt to the blocks: each line is one block's.
template <class Body>
__forceinline__ void forEachLine(std::uint64_t outer, std::uint64_t count, Body body) {
    const Share share = blockShare(outer * count);
    for (std::uint64_t i = share.begin; i < share.end; ++i) body(i / count, i % count);
}

/// Lines of the largest bundle: twice as many as a bundle's items elsewhere, for as long pieces of memory where the
/// lines run across its rows.
inline constexpr unsigned int lineBundle = 2 * largeBundle;

/// As forEachLine() for lines that lie side by side: calls body(o, bundle) for bundles of adjacent lines.
template <class Body>
__forceinline__ void forEachLineBundle(std::uint64_t outer, std::uint64_t count, Body body) {
    constexpr std::uint64_t large = lineBundle;
    const std::uint64_t bundles = (count + large - 1) / large;
    const Share share = blockShare(outer * bundles);
    for (std::uint64_t i = share.begin; i < share.end; ++i) {
        const std::uint64_t o = i / bundles;
        const std::uint64_t first = i % bundles * large;
        if (first + large <= count)
            body(o, WholeBundle<lineBundle>{first});
        else
            forEachBundleOf(first, count, [&](const auto bundle) { body(o, bundle); });
    }
}

/// Calls body(p) for the positions 0 ... count - 1 of a line, dealt to the lanes. For bodies that work on bundles.
template <class Body>
__forceinline__ void forEachPosition(std::uint64_t count, Body body) {
    for (std::uint64_t p = 0; p < count; ++p) body(p);
}

/// What lines hold a pixel as: integers as floats, so that they are converted once and not for every tap.
template <class T>
using LineValue = std::conditional_t<std::is_integral_v<T>, float, T>;

/// A copy of the lines of a bundle, the values of one position side by side.
template <class T>
class BundleLines {
public:
    BundleLines(LineValue<T>* values, unsigned int lanes) : values_(values), lanes_(lanes) {}

    __forceinline__ LineValue<T> operator()(std::uint64_t position, unsigned int lane) const {
        return values_[position * lineBundle + lane];
    }
    /// Sets one position from adjacent pixels.
    __forceinline__ void store(std::uint64_t position, const T* pixels) const {
        LineValue<T>* const values = values_ + position * lineBundle;
        if (lanes_ == lineBundle)
            convert(values, pixels, lineBundle);
        else
            convert(values, pixels, lanes_);
    }

private:
    __forceinline__ static void convert(LineValue<T>* values, const T* pixels, unsigned int count) {
#pragma omp simd
        for (unsigned int lane = 0; lane < count; ++lane) values[lane] = static_cast<LineValue<T>>(pixels[lane]);
    }

    LineValue<T>* values_;
    unsigned int lanes_;
};

/// Room for lines of `length` positions: the block's scratch line, where a bundle is one line; here the thread's own
/// memory. One at a time.
template <class T, class Bundle>
__forceinline__ BundleLines<T> bundleLines(const Bundle& bundle, T*, std::uint64_t length) {
    using Value = LineValue<T>;
    return {static_cast<Value*>(zel::host::threadScratch(length * lineBundle * sizeof(Value))), bundle.lanes};
}

/// Sets one position of a line, or of all lines of a bundle.
template <class T>
__forceinline__ void storePosition(LaneShared<T>* line, std::uint64_t position, const T* pixel) {
    line[position] = *pixel;
}
template <class T>
__forceinline__ void storePosition(const BundleLines<T>& lines, std::uint64_t position, const T* pixels) {
    lines.store(position, pixels);
}

/// line[i] = row[table[i]] for i = lane, lane + stride, ... below count. Neighbouring entries differ by at most 1, as
/// in a mirrored line, most of which is therefore a plain copy.
template <class T>
__forceinline__ void copyByTable(LaneShared<T>* line, const T* row, const LaneShared<unsigned long long>* table,
                                 std::uint64_t count, std::uint64_t lane, std::uint64_t stride) {
    constexpr std::uint64_t run = 32;
    std::uint64_t i = lane;
    if (stride == 1) {
        for (; i + run <= count; i += run) {
            if (table[i + run - 1] - table[i] == run - 1)
                std::memcpy(line + i, row + table[i], run * sizeof(T));
            else
                for (std::uint64_t k = i; k < i + run; ++k) line[k] = row[table[k]];
        }
    }
    for (; i < count; i += stride) line[i] = row[table[i]];
}

}  // namespace zel::cuda
