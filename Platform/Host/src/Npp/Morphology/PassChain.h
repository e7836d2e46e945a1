#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "Device/Allocations.h"
#include "Device/HeldWork.h"
#include "Npp/Common/FilterJob.h"
#include "Npp/Morphology/Morphology3x3.h"
#include "Npp/Morphology/PassSweep.h"
#include "Npp/Morphology/Plane.h"

namespace zel::host {

/// Passes by an element of radius 1, each one from the target of the last: the first from a source, the second to a
/// plane of its own or back to the source, all further ones in turns between the first two targets. They are held back
/// and run in sweeps, which leave both targets as the passes would one by one.
template <typename Order>
class PassChain final : public HeldWork {
public:
    using Pixel = typename Order::Pixel;

    /// Whether a pass can be part of a chain: of a whole image into another one, both in memory that the device made.
    /// What a program has made itself it may look at as soon as it has synchronised.
    static bool takes(const FilterJob<Pixel>& pass) {
        const bool whole = pass.offset.x == 0 && pass.offset.y == 0 && areEqual(pass.roi, pass.size);
        return whole && mayHoldWork() && isOnDevice(sourceOf(pass), pass.size) &&
               isOnDevice(targetOf(pass), pass.size) && areApart(sourceOf(pass), targetOf(pass), pass.size);
    }

    PassChain(const FilterJob<Pixel>& pass, Element3x3 element)
        : size_(pass.size), element_(element), planes_{sourceOf(pass), targetOf(pass), {}} {}

    bool append(const HeldWork& next) override {
        const auto* const pass = dynamic_cast<const PassChain*>(&next);
        if (pass == nullptr || pass->element_ != element_ || !areEqual(pass->size_, size_)) return false;
        const auto& [source, target, none] = pass->planes_;
        if (source != planeAfter(passes_)) return false;
        if (passes_ == 1) {
            if (target != planes_[0] && !areApart(target, planes_[0], size_)) return false;
            planes_[2] = target;
        } else if (target != planeAfter(passes_ + 1)) {
            return false;
        }
        ++passes_;
        return true;
    }

    bool writes(const void* address, std::size_t bytes) const override {
        const auto* const begin = static_cast<const std::byte*>(address);
        return std::any_of(planes_.begin() + 1, planes_.begin() + 1 + std::min(passes_, 2), [&](const Plane& plane) {
            return begin < plane.end(size_, sizeof(Pixel)) && plane.first < begin + bytes;
        });
    }

    void run() const override {
        for (int done = 0, count = 0; done < passes_; done += count) {
            const int left = passes_ - done;
            count = left < minPassesPerSweep ? 1 : std::min(left, maxPassesPerSweep);
            const Plane from = planeAfter(done), last = planeAfter(done + count);
            if (count == 1) {
                filter3x3<Order>(FilterJob<Pixel>(from.first, from.step, last.first, last.step, size_), element_);
            } else {
                sweepPasses<Order>({from, planeAfter(done + count - 1), last, size_}, element_, count);
            }
        }
    }

private:
    static bool areEqual(NppiSize a, NppiSize b) { return a.width == b.width && a.height == b.height; }
    static Plane sourceOf(const FilterJob<Pixel>& pass) { return {const_cast<std::byte*>(pass.origin), pass.srcStep}; }
    static Plane targetOf(const FilterJob<Pixel>& pass) { return {pass.dst, pass.dstStep}; }

    static bool isOnDevice(const Plane& plane, NppiSize size) {
        const auto bytes = static_cast<std::size_t>(plane.end(size, sizeof(Pixel)) - plane.first);
        return allocations().contains(plane.first, bytes);
    }
    static bool areApart(const Plane& a, const Plane& b, NppiSize size) {
        return a.end(size, sizeof(Pixel)) <= b.first || b.end(size, sizeof(Pixel)) <= a.first;
    }

    /// Where the image is after so many passes.
    const Plane& planeAfter(int passes) const { return planes_[passes == 0 ? 0 : passes % 2 == 1 ? 1 : 2]; }

    NppiSize size_;
    Element3x3 element_;
    int passes_ = 1;
    std::array<Plane, 3> planes_;  ///< the source, the target of odd passes and that of even ones
};

}  // namespace zel::host
