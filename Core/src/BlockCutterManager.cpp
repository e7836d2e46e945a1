#include "zel/BlockCutterManager.h"

#include <algorithm>

#include "Helper/raise.h"

namespace zel {

namespace {

void requireNoZero(const char* what, const BlockCutterManager::Size& size) {
    if (size.x > 0 && size.y > 0 && size.z > 0) return;
    raise<RuntimeError>("Core/src/BlockCutterManager", __LINE__, "the ", what, " is ", size.x, " x ", size.y, " x ",
                        size.z, "; each component must be at least 1");
}

}  // namespace

BlockCutterManager::Axis::Axis(unsigned image, unsigned block, unsigned previousOverlap, unsigned nextOverlap)
    : imageSize(image), previous(previousOverlap), next(nextOverlap) {
    const std::uint64_t overlaps = std::uint64_t{previousOverlap} + nextOverlap;
    length = static_cast<unsigned>(std::min<std::uint64_t>(std::max<std::uint64_t>(block, overlaps + 1), image));
    if (length == image) {
        stride = image;
        count = 1;
        return;
    }
    stride = length - static_cast<unsigned>(overlaps);
    // The last tile is the first whose end reaches the image's.
    count = 1 + (image - length + stride - 1) / stride;
}

std::uint64_t BlockCutterManager::allocateAndInitialize(std::unique_ptr<BlockCutterManager>& owner,
                                                        const Size& imageSize, const Size& blockSize, const Size& unit,
                                                        const Size& previousOverlap, const Size& nextOverlap) {
    requireNoZero("image size", imageSize);
    requireNoZero("block size", blockSize);
    if (unit != Size{1, 1, 1}) {
        raise<RuntimeError>("Core/src/BlockCutterManager", __LINE__, "the block unit is ", unit.x, " x ", unit.y, " x ",
                            unit.z, "; only 1 x 1 x 1 is supported");
    }
    owner.reset(new BlockCutterManager({imageSize.x, blockSize.x, previousOverlap.x, nextOverlap.x},
                                       {imageSize.y, blockSize.y, previousOverlap.y, nextOverlap.y},
                                       {imageSize.z, blockSize.z, previousOverlap.z, nextOverlap.z}));
    const Size blocks = owner->getNumOfBlocks();
    return std::uint64_t{blocks.x} * blocks.y * blocks.z;
}

BlockCutterManager::~BlockCutterManager() = default;

BlockCutterManager::Size BlockCutterManager::getNumOfBlocks() const {
    return {x_.count, y_.count, z_.count};
}

BlockCutterManager::Size BlockCutterManager::getBlockOrigin(unsigned i, unsigned j, unsigned k) const {
    return {x_.origin(i), y_.origin(j), z_.origin(k)};
}

BlockCutterManager::Size BlockCutterManager::getBlockSize(unsigned i, unsigned j, unsigned k) const {
    return {x_.size(i), y_.size(j), z_.size(k)};
}

BlockCutterManager::Size BlockCutterManager::getBlockPreviousOverlapSize(unsigned i, unsigned j, unsigned k) const {
    return {x_.previousOverlap(i), y_.previousOverlap(j), z_.previousOverlap(k)};
}

BlockCutterManager::Size BlockCutterManager::getBlockNextOverlapSize(unsigned i, unsigned j, unsigned k) const {
    return {x_.nextOverlap(i), y_.nextOverlap(j), z_.nextOverlap(k)};
}

}  // namespace zel
