#pragma once

#include <cstdint>
#include <memory>

#include "zel/Vector.h"
#include "zel/export.h"

namespace zel {

/// Cuts an image into overlapping tiles, which its interface calls blocks. A tile's size includes its margins (the
/// overlaps), and the tiles without their margins cover the image exactly once.
///
/// Along an axis let e be the asked size, but at least previous + next + 1 and at most the image's size. Tiles start at
/// k (e - previous - next) and are e long; the first that reaches the image's end takes all up to there and is the last.
/// The first tile has no previous margin and the last no next one.
class ZEL_API BlockCutterManager {
public:
    using Size = Vector3<unsigned>;

    /// Replaces `owner` by a new cutter.
    /// @param unit  tiles are whole multiples of it in every direction; (1, 1, 1).
    /// @return      the number of tiles, at least 1.
    /// @throws RuntimeError when a component of the image or tile size is 0, or the unit is not (1, 1, 1).
    static std::uint64_t allocateAndInitialize(std::unique_ptr<BlockCutterManager>& owner, const Size& imageSize,
                                               const Size& blockSize, const Size& unit, const Size& previousOverlap,
                                               const Size& nextOverlap);
    ~BlockCutterManager();

    /// Tiles along each axis.
    Size getNumOfBlocks() const;
    Size getBlockOrigin(unsigned i, unsigned j, unsigned k) const;
    Size getBlockSize(unsigned i, unsigned j, unsigned k) const;
    Size getBlockPreviousOverlapSize(unsigned i, unsigned j, unsigned k) const;
    Size getBlockNextOverlapSize(unsigned i, unsigned j, unsigned k) const;

private:
    /// The cut along one axis.
    struct Axis {
        Axis(unsigned imageSize, unsigned blockSize, unsigned previousOverlap, unsigned nextOverlap);

        unsigned origin(unsigned index) const { return index * stride; }
        unsigned size(unsigned index) const { return index + 1 == count ? imageSize - origin(index) : length; }
        unsigned previousOverlap(unsigned index) const { return index == 0 ? 0 : previous; }
        unsigned nextOverlap(unsigned index) const { return index + 1 == count ? 0 : next; }

        unsigned imageSize;
        unsigned previous;
        unsigned next;
        unsigned length;  // of all tiles but the last
        unsigned stride;
        unsigned count;
    };

    BlockCutterManager(const Axis& x, const Axis& y, const Axis& z) : x_(x), y_(y), z_(z) {}

    Axis x_;
    Axis y_;
    Axis z_;
};

}  // namespace zel
