#pragma once

#include <cstddef>

#include "Npp/Common/StoreLine.h"
#include "Npp/Morphology/DiamondSweep.h"
#include "Npp/Morphology/Element3x3.h"
#include "Npp/Morphology/Slabs.h"
#include "Npp/Morphology/SquareSweep.h"
#include "host_runtime/Parallel.h"

namespace zel::host {

// Many passes by an element of radius 1 in one sweep over the image. So many passes are one by the square or diamond of
// that radius, if nothing beyond the image's edge counts.

inline constexpr int minPassesPerSweep = 3;  // two are as quick one by one
inline constexpr int maxPassesPerSweep = 64;

/// @param passes  minPassesPerSweep to maxPassesPerSweep.
template <typename Order>
void sweepPasses(const SweepImages& images, Element3x3 element, int passes) {
    const Slabs<typename Order::Pixel> slabs(images, passes);
    parallelFor(static_cast<std::size_t>(slabs.count()), 1, [&](std::size_t begin, std::size_t end) {
        for (auto slab = static_cast<std::ptrdiff_t>(begin); slab != static_cast<std::ptrdiff_t>(end); ++slab) {
            if (element == Element3x3::square)
                SquareSweep<Order>(images, slabs[slab], passes).run();
            else
                DiamondSweep<Order>(images, slabs[slab], passes).run();
        }
        endStreaming();
    });
}

}  // namespace zel::host
