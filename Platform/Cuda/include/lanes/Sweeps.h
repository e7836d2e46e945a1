#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "Bundles.h"
#include "SweepAxes.h"

// Words for kernels of which each thread walks along a line, position after position.
namespace zel::cuda {

/// One value for each channel of a line, in registers.
template <class T, unsigned int count>
struct ChannelValues {
    T values[count];

    __device__ __forceinline__ T& operator[](unsigned int i) { return values[i]; }
    __device__ __forceinline__ const T& operator[](unsigned int i) const { return values[i]; }
};

template <unsigned int channelCount>
struct SweepLine {
    static constexpr unsigned int elements = channelCount;
    std::uint64_t first;
    std::uint64_t step;
    unsigned int firstChannel;
    unsigned int channels;

    __device__ __forceinline__ std::uint64_t at(int position, unsigned int i) const {
        return voxelAt(position, 0) * channels + firstChannel + i;
    }
    __device__ __forceinline__ std::uint64_t voxelAt(int position, unsigned int) const {
        return first + static_cast<std::uint64_t>(position) * step;
    }
    __device__ __forceinline__ static constexpr unsigned int lineOf(unsigned int) { return 0; }

    template <class T>
    __device__ __forceinline__ ChannelValues<T, channelCount> fill(T value) const {
        ChannelValues<T, channelCount> result;
        each([&](unsigned int i) { result[i] = value; });
        return result;
    }
    template <class T>
    __device__ __forceinline__ BundleValues<T> fillLines(T value) const {
        return {value};
    }

    template <class Body>
    __device__ __forceinline__ void each(Body body) const {
        for (unsigned int i = 0; i < channelCount; ++i) body(i);
    }
    template <class Body>
    __device__ __forceinline__ void eachLine(Body body) const {
        body(0u);
    }
    template <class Body>
    __device__ __forceinline__ void eachVoxel(int begin, int end, Body body) const {
        for (int position = begin; position < end; ++position) body(voxelAt(position, 0));
    }
};

template <int axis, class Body>
__device__ __forceinline__ void forEachSweepLine(const SweepAxis<axis>& along, Body body) {
    const std::uint64_t line = blockIdx.x * std::uint64_t{blockDim.x} + threadIdx.x;
    const std::uint64_t layer = blockIdx.y * std::uint64_t{blockDim.y} + threadIdx.y;
    if (line >= static_cast<std::uint64_t>(along.lines()) || layer >= static_cast<std::uint64_t>(along.layers()))
        return;
    const std::uint64_t first = layer * along.layerStep() + line * along.lineStep();
    const auto channels = static_cast<unsigned int>(along.channels);
    if (channels == 4)
        body(SweepLine<4>{first, along.step(), 0, channels});
    else if (channels == 2)
        body(SweepLine<2>{first, along.step(), 0, channels});
    else
        for (unsigned int channel = 0; channel < channels; ++channel)
            body(SweepLine<1>{first, along.step(), channel, channels});
}

}  // namespace zel::cuda
