#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

namespace zel::test {

/// A volume as a plain reference wants it: x fastest, without gaps.
template <typename T>
struct PlainVolume {
    std::array<std::size_t, 3> size;
    std::vector<T> voxels;

    std::size_t stride(std::size_t axis) const { return axis == 0 ? 1 : stride(axis - 1) * size[axis - 1]; }
};

/// Truncated as a GPU does it: to 32 bits, saturating there; of those the low bits.
template <typename T>
T truncated(float value) {
    if constexpr (std::is_floating_point_v<T>) {
        return value;
    } else {
        using Wide = std::conditional_t<std::is_signed_v<T>, std::int32_t, std::uint32_t>;
        const double low = std::numeric_limits<Wide>::min(), high = std::numeric_limits<Wide>::max();
        return static_cast<T>(static_cast<Wide>(std::clamp<double>(value, low, high)));
    }
}

/// A convolution along an axis, mirrored at the ends with the edge voxel repeated; the sum is a float at each tap.
template <typename TOut, typename TIn>
PlainVolume<TOut> plainPass(const PlainVolume<TIn>& in, std::size_t axis, const std::vector<float>& taps) {
    PlainVolume<TOut> out{in.size, std::vector<TOut>(in.voxels.size())};
    const auto length = static_cast<long>(in.size[axis]), half = static_cast<long>(taps.size() / 2);
    const auto stride = static_cast<long>(in.stride(axis));
    for (std::size_t i = 0; i < in.voxels.size(); ++i) {
        const long position = static_cast<long>(i) / stride % length;
        float sum = 0;
        for (std::size_t k = 0; k < taps.size(); ++k) {
            const long period = 2 * length;
            const long wrapped = ((position + static_cast<long>(k) - half) % period + period) % period;
            const long mirrored = std::min(wrapped, period - 1 - wrapped);
            const TIn voxel =
                in.voxels[static_cast<std::size_t>(static_cast<long>(i) + (mirrored - position) * stride)];
            if constexpr (std::is_same_v<TIn, double>) {
                sum = static_cast<float>(std::fma(voxel, static_cast<double>(taps[k]), static_cast<double>(sum)));
            } else {
                sum = std::fma(static_cast<float>(voxel), taps[k], sum);
            }
        }
        out.voxels[i] = truncated<TOut>(sum);
    }
    return out;
}

}  // namespace zel::test
