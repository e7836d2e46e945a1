#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "Runs/Devices.h"
#include "Runs/RunOptions.h"
#include "zel/ImageModel.h"
#include "zel/Property.h"
#include "zel/RunPlan.h"

namespace zel::tool {

/// An algorithm whose caller says how images are cut into tiles.
template <typename Algorithm>
concept TakesTiles = requires(Algorithm algorithm) {
    algorithm.tileSize;
};

/// A tile has as many dimensions as the images that the algorithm takes.
inline void setTile(Property<Vector2<unsigned>>& tileSize, const Vector3<unsigned>& tile) {
    tileSize = {tile.x, tile.y};
}
inline void setTile(Property<Vector3<unsigned>>& tileSize, const Vector3<unsigned>& tile) {
    tileSize = tile;
}

/// "--tile 512,256": with a depth for 3D algorithms.
std::string tileText(const Property<Vector2<unsigned>>& tileSize);
std::string tileText(const Property<Vector3<unsigned>>& tileSize);

/// What is said where device memory does not suffice. @param advice  what helps; may be empty.
[[noreturn]] void raiseTooLarge(const RunPlan& plan, const DeviceMemory& memory, const std::string& advice);

/// Sets the largest tile whose plan fits, found by halving the longest side of the image again and again.
/// @param bytes  of device memory.
/// @return nothing when none fits.
template <typename Algorithm>
std::optional<RunPlan> fitTile(Algorithm& algorithm, const ImageModel& image, std::uint64_t bytes) {
    std::array<std::size_t, 3> tile{image.getDimension(0), image.getDimension(1), image.getDimension(2)};
    algorithm.tilingMode = 1;
    for (auto longest = std::ranges::max_element(tile); *longest > 1; longest = std::ranges::max_element(tile)) {
        *longest = (*longest + 1) / 2;
        setTile(algorithm.tileSize,
                {static_cast<unsigned>(tile[0]), static_cast<unsigned>(tile[1]), static_cast<unsigned>(tile[2])});
        const RunPlan plan = algorithm.plan();
        if (plan.peakBytes > bytes) continue;
        setTile(algorithm.tileSize, plan.tileSize);  // as large as the margins ask for
        return plan;
    }
    return std::nullopt;
}

/// Sets the tiles that the options ask for, and compares the run's plan with the memory that is free.
/// @param algorithm  with all else set.
/// @throws std::runtime_error when it does not suffice, with what helps.
template <typename Algorithm>
RunPlan settleTiles(Algorithm& algorithm, const ImageModel& image, const RunOptions& options) {
    if constexpr (TakesTiles<Algorithm>) {
        algorithm.tilingMode = options.tile ? 1 : 0;
        if (options.tile) {
            const auto depth = static_cast<unsigned>(image.getDimension(2));
            setTile(algorithm.tileSize,
                    {options.tile->width, options.tile->height, options.tile->depth.value_or(depth)});
        }
    }
    const RunPlan plan = algorithm.plan();
    const DeviceMemory memory = deviceMemory();
    if (plan.peakBytes <= memory.free) return plan;
    if constexpr (TakesTiles<Algorithm>) {
        // Rows of a round length and pages of memory take a little more than the plan counts.
        const auto fitting = fitTile(algorithm, image, memory.free - memory.free / 20);
        if (!fitting) raiseTooLarge(plan, memory, "no tile is small enough");
        if (!options.isTileAuto) {
            raiseTooLarge(plan, memory, tileText(algorithm.tileSize) + " fits, as --tile auto finds");
        }
        return *fitting;
    } else {
        raiseTooLarge(plan, memory, "");
    }
}

}  // namespace zel::tool
