#pragma once

#include <array>
#include <cstdint>

#include "NonLocalMeans/CudaAmnlmData.h"
#include "zel/ImageModel.h"

namespace amnlm {

/// Extents or a position along x, y and z.
using Extents3 = std::array<std::int32_t, 3>;

/// A box of voxels; all bounds belong to it.
struct Region {
    Region() = default;
    /// From two opposite corners in any order.
    Region(const Extents3& corner, const Extents3& opposite);

    std::int32_t extentX() const { return xHigh - xLow + 1; }
    std::int32_t extentY() const { return yHigh - yLow + 1; }
    std::int32_t extentZ() const { return zHigh - zLow + 1; }

    std::int32_t xLow = 0, xHigh = 0;
    std::int32_t yLow = 0, yHigh = 0;
    std::int32_t zLow = 0, zHigh = 0;
};

/// The intersection of two regions that overlap.
Region intersect(const Region& a, const Region& b);

/// Walks over the cores of the blocks that an image is cut into, x fastest and z slowest. The last core along an axis
/// takes what is left. Axis 0 is x.
struct BlockIterator {
    /// @param steps  extents of a core, each at least 1.
    BlockIterator(const Extents3& extents, const Extents3& steps);

    /// Goes to the next core, at first to the first one. False at the end of the walk.
    bool next();
    Region core() const;

    static constexpr std::size_t rank = 3;
    Extents3 position{};  ///< of the core
    Extents3 extent{};    ///< of the core
    Extents3 origin{};    ///< of the image
    Extents3 size;        ///< of the image
    Extents3 step;
};

/// How many more times next() returns true.
std::uint64_t countBlocks(BlockIterator iterator);

/// The core with `margin` more voxels on each side, as far as the image reaches.
Region extendedRegion(const Region& core, std::int32_t margin, const Region& image);

/// Reads a region of an image, scaled as `minimum` and `maximum` go to 0 and 1.
/// @param block  extents (Z, Y, X, 1) of the region.
/// @throws RuntimeError when rows cannot be read, naming the first of them.
void readBlock(const zel::ImageModel* image, float minimum, float maximum, const Region& region,
               RkCUDAAMNLMData& block);

/// Writes the core of a filtered block to its place in the image, scaled back. NaN becomes 0; integers are truncated
/// toward zero, and values beyond their type's range keep their low bits.
/// @param result  extents (Z, Y, X, 1) of the extended region.
/// @throws RuntimeError when rows cannot be written, naming the first of them.
void writeBlock(zel::ImageModel* image, float minimum, float maximum, const RkCUDAAMNLMData& result,
                const Region& extendedRegion, const Region& coreRegion);

}  // namespace amnlm
