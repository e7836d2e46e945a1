#pragma once

#include <algorithm>
#include <cstdint>

#include "CudaAmnlmBlocks.h"
#include "ManifoldTree_CUDA.h"

namespace amnlm {

/// Channels of the patch image.
inline constexpr std::int32_t patchChannels = 4;

/// Counts allocated bytes. Each entry of a dry run has a name, which this ledger needs not.
class MemoryLedger {
public:
    void hold(std::uint64_t bytes, const char*) {
        total_ += bytes;
        peak_ = std::max(peak_, total_);
    }
    void release(std::uint64_t bytes) { total_ -= bytes; }
    /// Held and released at once.
    void touch(std::uint64_t bytes, const char*) { peak_ = std::max(peak_, total_ + bytes); }

    std::uint64_t peak() const { return peak_; }

private:
    std::uint64_t total_ = 0;
    std::uint64_t peak_ = 0;
};

/// The dry run of adaptiveManifoldFilter(): enters what the filter holds at a time for one block, with the block's own
/// data, and allocates nothing. Has to change whenever the filter's allocations do.
template <typename Ledger>
class ManifoldMemory {
public:
    ManifoldMemory(Ledger& ledger, const Extents3& extents, float rangeSigma, float spatialSigma)
        : ledger_(ledger), height_(treeHeight(rangeSigma, spatialSigma)) {
        const float factor = downSamplingFactor(rangeSigma, spatialSigma);
        for (const std::int32_t extent : extents) {
            fine_ *= static_cast<std::uint64_t>(extent);
            coarse_ *= static_cast<std::uint64_t>(coarseExtent(extent, factor));
        }
    }

    void run() {
        ledger_.hold(floats(fine_), "block");
        ledger_.hold(floats(fine_), "result");
        ledger_.hold(floats(fine_), "numerator");
        ledger_.hold(floats(fine_), "denominator");
        ledger_.hold(patches(fine_), "patch image");
        ledger_.hold(patches(fine_), "eta of the root");
        ledger_.hold(patches(fine_), "difference");
        ledger_.hold(fine_, "cluster");
        node(1);
    }

private:
    static std::uint64_t floats(std::uint64_t voxels) { return voxels * sizeof(float); }
    static std::uint64_t patches(std::uint64_t voxels) { return floats(voxels) * patchChannels; }

    void node(int depth) {
        ledger_.hold(floats(fine_), "weights");
        manifold(patches(depth == 1 ? coarse_ : fine_));
        if (depth < height_) children(depth);
        ledger_.release(floats(fine_));
    }

    /// @param otherEta  bytes of the manifold at the resolution that it does not come in.
    void manifold(std::uint64_t otherEta) {
        ledger_.hold(otherEta, "eta at the other resolution");
        ledger_.touch(floats(fine_), "channel square sum");
        ledger_.hold(2 * floats(coarse_), "splat");
        ledger_.hold(floats(fine_), "weights times image");
        ledger_.touch(2 * floats(fine_), "concatenation");
        ledger_.release(floats(fine_));
        ledger_.hold(2 * floats(coarse_), "blurred splat");
        ledger_.touch(floats(coarse_), "distances of the recursive filter");
        ledger_.hold(floats(coarse_), "extracted channel");
        ledger_.touch(floats(fine_), "up-sampled numerator");
        ledger_.touch(floats(fine_), "up-sampled denominator");
        ledger_.release(5 * floats(coarse_) + otherEta);
    }

    void children(int depth) {
        const std::uint64_t direction = sizeof(float) * patchChannels;
        ledger_.hold(fine_, "child cluster");
        ledger_.hold(direction, "dominant direction");
        ledger_.hold(direction, "start of the dominant direction");
        ledger_.touch(patches(fine_), "working image of the dominant direction");
        ledger_.release(direction);
        ledger_.touch(floats(fine_), "dot products");
        ledger_.release(direction);
        ledger_.hold(patches(coarse_), "eta of the children");
        for (int child = 0; child < 2; ++child) {
            eta();
            node(depth + 1);
        }
        ledger_.release(patches(coarse_) + fine_);
    }

    void eta() {
        ledger_.hold(patches(coarse_), "numerator of eta");
        ledger_.touch(patches(fine_), "theta times patches");
        ledger_.touch(patches(coarse_), "copy of the numerator of eta");
        ledger_.hold(floats(coarse_), "masked theta, coarse");
        ledger_.hold(floats(fine_), "masked theta");
        ledger_.touch(floats(coarse_), "denominator of eta");
        ledger_.release(floats(fine_) + floats(coarse_) + patches(coarse_));
    }

    Ledger& ledger_;
    const int height_;
    std::uint64_t fine_ = 1;    ///< voxels of the block
    std::uint64_t coarse_ = 1;  ///< voxels of a manifold
};

}  // namespace amnlm
