#include "CudaAmnlmBlocks.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "VoxelAccess_CUDA.h"

namespace amnlm {

namespace {

constexpr const char* source = "Cuda/src/NonLocalMeans/CudaAmnlmBlocks";

/// Calls body.operator()<T>(y, z, failed) for all rows of a region, slice after slice, with T the image's voxel type.
template <typename Body>
void forEachRow(const zel::ImageModel& image, const char* action, const Region& region, const Body& body) {
    withVoxelType(image, source, [&]<typename T>() {
        for (std::int32_t z = region.zLow; z <= region.zHigh; ++z) {
            FailedRows failed;
            const auto rows = [&](const tbb::blocked_range<int>& range) {
                for (int y = range.begin(); y != range.end(); ++y) body.template operator()<T>(y, z, failed);
            };
            tbb::task_group_context context;
            tbb::parallel_for(tbb::blocked_range<int>(region.yLow, region.yHigh + 1), rows, tbb::auto_partitioner(),
                              context);
            failed.raiseIfAny(action, image);
        }
    });
}

/// The place of a region's row in the values of the region.
std::size_t rowOffset(const Region& region, std::int32_t y, std::int32_t z) {
    const auto row = std::int64_t{z - region.zLow} * region.extentY() + (y - region.yLow);
    return static_cast<std::size_t>(row * region.extentX());
}

std::size_t unsignedIndex(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

}  // namespace

Region::Region(const Extents3& corner, const Extents3& opposite)
    : xLow(std::min(corner[0], opposite[0])),
      xHigh(std::max(corner[0], opposite[0])),
      yLow(std::min(corner[1], opposite[1])),
      yHigh(std::max(corner[1], opposite[1])),
      zLow(std::min(corner[2], opposite[2])),
      zHigh(std::max(corner[2], opposite[2])) {}

Region intersect(const Region& a, const Region& b) {
    Region common;
    common.xLow = std::max(a.xLow, b.xLow);
    common.xHigh = std::min(a.xHigh, b.xHigh);
    common.yLow = std::max(a.yLow, b.yLow);
    common.yHigh = std::min(a.yHigh, b.yHigh);
    common.zLow = std::max(a.zLow, b.zLow);
    common.zHigh = std::min(a.zHigh, b.zHigh);
    return common;
}

BlockIterator::BlockIterator(const Extents3& extents, const Extents3& steps) : size(extents), step(steps) {
    position[0] -= step[0];
}

bool BlockIterator::next() {
    for (std::size_t axis = 0;; ++axis) {
        const std::int64_t next = std::int64_t{position[axis]} + step[axis];
        if (next < std::int64_t{origin[axis]} + size[axis]) {
            position[axis] = static_cast<std::int32_t>(next);
            break;
        }
        if (axis == rank - 1) return false;
        position[axis] = origin[axis];
    }
    for (std::size_t axis = 0; axis < rank; ++axis)
        extent[axis] = std::min(step[axis], size[axis] - position[axis] + origin[axis]);
    return true;
}

Region BlockIterator::core() const {
    return Region(position, {position[0] + extent[0] - 1, position[1] + extent[1] - 1, position[2] + extent[2] - 1});
}

std::uint64_t countBlocks(BlockIterator iterator) {
    std::uint64_t count = 0;
    while (iterator.next()) ++count;
    return count;
}

Region extendedRegion(const Region& core, std::int32_t margin, const Region& image) {
    // In 64 bits: a margin may be as long as the longest axis.
    const auto lower = [=](std::int32_t low, std::int32_t first) {
        return static_cast<std::int32_t>(std::max<std::int64_t>(std::int64_t{low} - margin, first));
    };
    const auto higher = [=](std::int32_t high, std::int32_t last) {
        return static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{high} + margin, last));
    };
    Region region;
    region.xLow = lower(core.xLow, image.xLow);
    region.xHigh = higher(core.xHigh, image.xHigh);
    region.yLow = lower(core.yLow, image.yLow);
    region.yHigh = higher(core.yHigh, image.yHigh);
    region.zLow = lower(core.zLow, image.zLow);
    region.zHigh = higher(core.zHigh, image.zHigh);
    return region;
}

void readBlock(const zel::ImageModel* image, float minimum, float maximum, const Region& region,
               RkCUDAAMNLMData& block) {
    const std::size_t width = unsignedIndex(region.extentX());
    std::vector<float> host(block.elementCount());
    forEachRow(*image, "read", region, [&]<typename T>(std::int32_t y, std::int32_t z, FailedRows& failed) {
        const std::size_t x = unsignedIndex(region.xLow);
        std::vector<T> row(width);
        if (!image->readRow(width, row.data(), x, unsignedIndex(y), unsignedIndex(z), 0, 0))
            failed.add(x, unsignedIndex(y), unsignedIndex(z));
        float* const values = host.data() + rowOffset(region, y, z);
        for (std::size_t i = 0; i < width; ++i)
            values[i] = scaledIntensity(static_cast<float>(row[i]), minimum, maximum);
    });
    block.upload(host);
}

void writeBlock(zel::ImageModel* image, float minimum, float maximum, const RkCUDAAMNLMData& result,
                const Region& extendedRegion, const Region& coreRegion) {
    std::vector<float> host(result.elementCount());
    result.download(host);
    const Region core = intersect(extendedRegion, coreRegion);
    const std::size_t width = unsignedIndex(core.extentX());
    forEachRow(*image, "write", core, [&]<typename T>(std::int32_t y, std::int32_t z, FailedRows& failed) {
        const std::size_t x = unsignedIndex(core.xLow);
        const float* const values =
            host.data() + rowOffset(extendedRegion, y, z) + unsignedIndex(core.xLow - extendedRegion.xLow);
        std::vector<T> row(width);
        for (std::size_t i = 0; i < width; ++i) {
            const float scaledBack = (maximum - minimum) * values[i] + minimum;
            row[i] = voxelOf<T>(std::isnan(values[i]) ? 0.0f : scaledBack);
        }
        if (!image->writeRow(width, row.data(), x, unsignedIndex(y), unsignedIndex(z), 0, 0))
            failed.add(x, unsignedIndex(y), unsignedIndex(z));
    });
}

}  // namespace amnlm
