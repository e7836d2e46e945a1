#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// One value for each item of a bundle.
template <class T, unsigned int capacity>
struct BundleValues {
    alignas(64) T values[capacity];

    __forceinline__ T& operator[](unsigned int lane) { return values[lane]; }
    __forceinline__ const T& operator[](unsigned int lane) const { return values[lane]; }
};

/// `lanes` adjacent items whose values stay in registers. The constant count is what keeps them there.
template <unsigned int count>
struct WholeBundle {
    static constexpr unsigned int capacity = count;
    static constexpr unsigned int lanes = count;
    std::uint64_t first;  ///< the first lane's item

    /// A value for each item, all equal to begin with.
    template <class T>
    __forceinline__ BundleValues<T, capacity> fill(T value) const {
        BundleValues<T, capacity> result;
#pragma omp simd
        for (unsigned int lane = 0; lane < count; ++lane) result.values[lane] = value;
        return result;
    }

    /// Calls body(lane) for each lane; its item is first + lane.
    template <class Body>
    __forceinline__ void each(Body body) const {
#pragma omp simd
        for (unsigned int lane = 0; lane < count; ++lane) body(lane);
    }
};

/// The last items of a row, fewer than the smallest whole bundle has.
struct PartBundle {
    static constexpr unsigned int capacity = 16;
    std::uint64_t first;
    unsigned int lanes;

    template <class T>
    __forceinline__ BundleValues<T, capacity> fill(T value) const {
        return WholeBundle<capacity>{first}.fill(value);
    }

    template <class Body>
    __forceinline__ void each(Body body) const {
#pragma omp simd
        for (unsigned int lane = 0; lane < lanes; ++lane) body(lane);
    }
};

/// Items of the largest bundle.
inline constexpr unsigned int largeBundle = 64;

/// Calls body(bundle) for bundles that together hold the items first ... end - 1.
template <class Body>
__forceinline__ void forEachBundleOf(std::uint64_t first, std::uint64_t end, Body body) {
    constexpr unsigned int small = PartBundle::capacity;
    for (; first + largeBundle <= end; first += largeBundle) body(WholeBundle<largeBundle>{first});
    for (; first + small <= end; first += small) body(WholeBundle<small>{first});
    if (first < end) body(PartBundle{first, static_cast<unsigned int>(end - first)});
}

/// Calls body(bundle) for bundles that together hold the items 0 ... count - 1. The body is generic: bundles come in
/// several types. For work with an inner loop over taps or terms, whose sums then stay in registers.
template <class Body>
__forceinline__ void forEachBundle(std::uint64_t count, Body body) {
    forEachBundleOf(0, count, body);
}

}  // namespace zel::cuda
