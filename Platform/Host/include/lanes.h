#pragma once

#include <cuda_runtime.h>

#include <cstdint>

/// The words in which kernels say what the threads of a block do. Here the thread that runs a block does the work of
/// all of its lanes, in SIMD registers: whatever the words say is independent from lane to lane must be so.
namespace zel::cuda {

/// Memory that lanes of a block exchange values through.
template <class T>
using LaneShared = T;

/// All lanes of the block have come here before any goes on. Not inside another word.
__forceinline__ void blockBarrier() {}

/// The dynamic shared memory of the launch, as an array of T.
template <class T>
__forceinline__ T* dynamicShared() {
    return static_cast<T*>(zel::host::blockSharedMemory);
}

/// Calls body() once a block.
template <class Body>
__forceinline__ void onFirstLane(Body body) {
    body();
}

/// For device functions that walk over items themselves: the lane's first item, and the way to its next.
__forceinline__ std::uint64_t firstItem() {
    return 0;
}
__forceinline__ std::uint64_t itemStride() {
    return 1;
}

/// Calls body(x) for x = 0 ... width - 1, dealt to the lanes of the block.
template <class Body>
__forceinline__ void forEachColumn(std::uint64_t width, Body body) {
#pragma omp simd
    for (std::uint64_t x = 0; x < width; ++x) body(x);
}

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

/// Calls body(bundle) for bundles that together hold the items 0 ... count - 1. The body is generic: bundles come in
/// several types. For work with an inner loop over taps or terms, whose sums then stay in registers.
template <class Body>
__forceinline__ void forEachBundle(std::uint64_t count, Body body) {
    constexpr unsigned int large = 64;
    constexpr unsigned int small = PartBundle::capacity;
    std::uint64_t item = 0;
    for (; item + large <= count; item += large) body(WholeBundle<large>{item});
    for (; item + small <= count; item += small) body(WholeBundle<small>{item});
    if (item < count) body(PartBundle{item, static_cast<unsigned int>(count - item)});
}

}  // namespace zel::cuda
