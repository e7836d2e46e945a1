#pragma once

#include <cuda_runtime.h>

#include "Bundles.h"

// Words for kernels whose voxels have channels.
namespace zel::cuda {

template <class Body>
__device__ __forceinline__ void withChannels(int channels, Body body) {
    body(channels);
}

template <class Channels, class Body>
__device__ __forceinline__ void forEachChannel(Channels channels, Body body) {
    for (int k = 0; k < channels; ++k) body(k);
}

template <class Bundle, int channels>
class ChannelSums {
public:
    __device__ __forceinline__ ChannelSums(const Bundle& bundle, float* image)
        : place_(image + bundle.first * channels) {}
    ChannelSums(const ChannelSums&) = delete;
    ChannelSums& operator=(const ChannelSums&) = delete;

    __device__ __forceinline__ float& operator()(int channel, unsigned int) { return place_[channel]; }

private:
    float* place_;
};

}  // namespace zel::cuda
