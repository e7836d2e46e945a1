#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "Block.h"
#include "BlockNumber.h"
#include "Bundles.h"

// Words for kernels whose blocks walk over the lines of an image. blockBarrier() may stand inside their bodies.
namespace zel::cuda {

template <class Body>
__device__ __forceinline__ void forEachLine(std::uint64_t outer, std::uint64_t count, Body body) {
    for (std::uint64_t o = 0; o < outer; ++o)
        for (std::uint64_t l = blockNumber(); l < count; l += blockCount()) body(o, l);
}

template <class Body>
__device__ __forceinline__ void forEachLineBundle(std::uint64_t outer, std::uint64_t count, Body body) {
    forEachLine(outer, count, [=](std::uint64_t o, std::uint64_t l) { body(o, ScalarBundle{l}); });
}

template <class Body>
__device__ __forceinline__ void forEachPosition(std::uint64_t count, Body body) {
    forEachColumn(count, body);
}

template <class T>
class BundleLines {
public:
    __device__ __forceinline__ explicit BundleLines(LaneShared<T>* values) : values_(values) {}

    __device__ __forceinline__ T operator()(std::uint64_t position, unsigned int) const { return values_[position]; }
    __device__ __forceinline__ void store(std::uint64_t position, const T* pixel) const { values_[position] = *pixel; }

private:
    LaneShared<T>* values_;
};

template <class T>
__device__ __forceinline__ BundleLines<T> bundleLines(ScalarBundle, volatile T* line, std::uint64_t) {
    return BundleLines<T>(line);
}

template <class T>
__device__ __forceinline__ void storePosition(volatile T* line, std::uint64_t position, const T* pixel) {
    line[position] = *pixel;
}
template <class T>
__device__ __forceinline__ void storePosition(const BundleLines<T>& lines, std::uint64_t position, const T* pixel) {
    lines.store(position, pixel);
}

template <class T>
__device__ __forceinline__ void copyByTable(LaneShared<T>* line, const T* row,
                                            const LaneShared<unsigned long long>* table, std::uint64_t count,
                                            std::uint64_t lane, std::uint64_t stride) {
    for (std::uint64_t i = lane; i < count; i += stride) line[i] = row[table[i]];
}

}  // namespace zel::cuda
