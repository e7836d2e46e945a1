#pragma once

#include <cuda_runtime.h>

#include <type_traits>

// Words for kernels whose voxels have channels.
namespace zel::cuda {

/// Calls body(channels) with the count as a compile-time constant where it is 1, 2 or 4: a loop of unknown length
/// within the loop over voxels would keep that from being vectorised. The body is generic.
template <class Body>
__forceinline__ void withChannels(int channels, Body body) {
    switch (channels) {
        case 1:
            return body(std::integral_constant<int, 1>{});
        case 2:
            return body(std::integral_constant<int, 2>{});
        case 4:
            return body(std::integral_constant<int, 4>{});
        default:
            return body(channels);
    }
}

/// Calls body(k) for k = 0 ... channels - 1, independent of each other, within one thread.
template <class Channels, class Body>
__forceinline__ void forEachChannel(Channels channels, Body body) {
#pragma omp simd
    for (int k = 0; k < channels; ++k) body(k);
}

/// Sums for each channel of a bundle's items, which lie in `image`, an item's channels side by side: loaded here, put
/// back at the end of its scope, and apart by channel meanwhile.
template <class Bundle, int channels>
class ChannelSums {
public:
    __forceinline__ ChannelSums(const Bundle& bundle, float* image)
        : bundle_(bundle), place_(image + bundle.first * channels) {
        bundle_.each([&](unsigned int lane) {
            for (int k = 0; k < channels; ++k) sums_[k][lane] = place_[lane * channels + k];
        });
    }
    __forceinline__ ~ChannelSums() {
        bundle_.each([&](unsigned int lane) {
            for (int k = 0; k < channels; ++k) place_[lane * channels + k] = sums_[k][lane];
        });
    }
    ChannelSums(const ChannelSums&) = delete;
    ChannelSums& operator=(const ChannelSums&) = delete;

    __forceinline__ float& operator()(int channel, unsigned int lane) { return sums_[channel][lane]; }

private:
    const Bundle& bundle_;
    float* place_;
    alignas(64) float sums_[channels][Bundle::capacity];
};

}  // namespace zel::cuda
