#pragma once

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "Bundles.h"
#include "Share.h"
#include "SweepAxes.h"

// Words for kernels of which each thread walks along a line, position after position. No barrier, and no other word
// beside them that does not share its work among the calls of a kernel.
namespace zel::cuda {

/// `lineCount` lines side by side, which are walked along together. Of each voxel the channels from `firstChannel` on,
/// `channelCount` of them, are worked on; an element is one channel of one line: element i belongs to line
/// i / channelCount. Where the lines' elements are neighbours in memory, a step loads and stores them as vectors.
template <unsigned int channelCount, unsigned int lineCount, bool elementsAdjacent>
struct SweepLines {
    static constexpr unsigned int elements = channelCount * lineCount;
    /// An element told so that the compiler sees which ones are neighbours in memory.
    struct ChannelOfLine {
        unsigned int line, channel;
        __forceinline__ operator unsigned int() const { return line * channelCount + channel; }
    };

    std::uint64_t first;  ///< number of the first line's first voxel
    std::uint64_t step;
    std::uint64_t lineStep;
    unsigned int firstChannel;
    unsigned int channels;  ///< of a voxel

    /// Where an element has its value at a position, in an array of all channels.
    __forceinline__ std::uint64_t at(int position, unsigned int i) const {
        return (first + static_cast<std::uint64_t>(position) * step) * channelCount + i;
    }
    __forceinline__ std::uint64_t at(int position, ChannelOfLine i) const {
        return voxelAt(position, i.line) * channels + firstChannel + i.channel;
    }
    /// Number of the voxel of a line at a position: the index in an array of one channel.
    __forceinline__ std::uint64_t voxelAt(int position, unsigned int line) const {
        return first + static_cast<std::uint64_t>(position) * step + line * lineStep;
    }
    __forceinline__ static constexpr unsigned int lineOf(unsigned int i) { return i / channelCount; }
    __forceinline__ static constexpr unsigned int lineOf(ChannelOfLine i) { return i.line; }

    /// A value for each element, and one for each line, all equal to begin with.
    template <class T>
    __forceinline__ BundleValues<T, elements> fill(T value) const {
        return WholeBundle<elements>{0}.fill(value);
    }
    template <class T>
    __forceinline__ BundleValues<T, lineCount> fillLines(T value) const {
        return WholeBundle<lineCount>{0}.fill(value);
    }

    /// Calls body(i) for each element, i being an integer or what converts to one. Of lines apart, the channels of one
    /// line are a vector; single channels are taken one by one, their values in registers.
    template <class Body>
    __forceinline__ void each(Body body) const {
        if constexpr (elementsAdjacent) {
#pragma omp simd
            for (unsigned int i = 0; i < elements; ++i) body(i);
        } else if constexpr (channelCount == 1) {
#pragma GCC unroll 64
            for (unsigned int line = 0; line < lineCount; ++line) body(ChannelOfLine{line, 0});
        } else {
#pragma GCC unroll 64
            for (unsigned int line = 0; line < lineCount; ++line) {
#pragma omp simd
                for (unsigned int channel = 0; channel < channelCount; ++channel) body(ChannelOfLine{line, channel});
            }
        }
    }
    /// Calls body(line) for each line.
    template <class Body>
    __forceinline__ void eachLine(Body body) const {
#pragma omp simd
        for (unsigned int line = 0; line < lineCount; ++line) body(line);
    }
    /// Calls body(voxel) for the number of each voxel at the positions begin ... end - 1, in any order.
    template <class Body>
    __forceinline__ void eachVoxel(int begin, int end, Body body) const {
        if constexpr (elementsAdjacent) {
            for (int position = begin; position < end; ++position)
                eachLine([&](unsigned int line) { body(voxelAt(position, line)); });
        } else {
            for (unsigned int line = 0; line < lineCount; ++line) {
#pragma omp simd
                for (int position = begin; position < end; ++position) body(voxelAt(position, line));
            }
        }
    }
};

namespace detail {

/// How many neighbours are walked along together, so that a step takes whole cache lines out of each row of memory.
inline constexpr unsigned int adjacentLines = 32;

/// How many lines are walked along together where they lie a row of memory apart: enough to hide the latency from one
/// step to the next, and so few that their cache lines in two arrays, which an even length maps to one cache set, stay
/// in the cache.
inline constexpr unsigned int separateLines = 4;

/// The launch's lines dealt to its calls in bundles of neighbours; those left over at the end of a layer go
/// in smaller bundles, then one by one.
template <unsigned int channelCount, bool adjacent, int axis, class Body>
__forceinline__ void sweepChannels(const SweepAxis<axis>& along, unsigned int firstChannel, Body body) {
    constexpr unsigned int large = adjacent ? adjacentLines : separateLines;
    constexpr unsigned int small = adjacent ? PartBundle::capacity / channelCount : 1;
    const auto lines = static_cast<std::uint64_t>(along.lines());
    const auto channels = static_cast<unsigned int>(along.channels);
    const std::uint64_t bundles = (lines + large - 1) / large;
    const std::uint64_t total = bundles * static_cast<std::uint64_t>(along.layers());
    const Share share = callShare(total);
    for (std::uint64_t bundle = share.begin; bundle < share.end; ++bundle) {
        std::uint64_t line = bundle % bundles * large;
        const std::uint64_t lineEnd = std::min(line + large, lines);
        const std::uint64_t layer = bundle / bundles * along.layerStep();
        const auto sweep = [&]<unsigned int count>(std::integral_constant<unsigned int, count>) {
            for (; line + count <= lineEnd; line += count)
                body(SweepLines<channelCount, count, adjacent>{layer + line * along.lineStep(), along.step(),
                                                               along.lineStep(), firstChannel, channels});
        };
        sweep(std::integral_constant<unsigned int, large>{});
        sweep(std::integral_constant<unsigned int, small>{});
        if constexpr (small > 1) sweep(std::integral_constant<unsigned int, 1>{});
    }
}

}  // namespace detail

/// Calls body(lines) for all lines along an axis, each of which is walked along by one thread of the launch: thread x
/// goes with the line, thread y with the layer, and those beyond do nothing. The body is generic and reaches data
/// through lines.at() and lines.voxelAt() only. Channel counts other than 1, 2 and 4 come a channel after the other,
/// the first one first.
template <int axis, class Body>
__forceinline__ void forEachSweepLine(const SweepAxis<axis>& along, Body body) {
    constexpr bool adjacent = axis != 0;
    switch (along.channels) {
        case 1:
            return detail::sweepChannels<1, adjacent>(along, 0, body);
        case 2:
            return detail::sweepChannels<2, adjacent>(along, 0, body);
        case 4:
            return detail::sweepChannels<4, adjacent>(along, 0, body);
        default:
            for (int channel = 0; channel < along.channels; ++channel)
                detail::sweepChannels<1, false>(along, static_cast<unsigned int>(channel), body);
    }
}

}  // namespace zel::cuda
