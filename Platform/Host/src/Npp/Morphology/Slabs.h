#pragma once

#include <algorithm>
#include <cstddef>
#include <new>

#include "Device/BlockStore.h"
#include "Npp/Common/StoreLine.h"
#include "Npp/Morphology/Plane.h"
#include "Threads/Arena.h"
#include "host_runtime/Parallel.h"

namespace zel::host {

/// The images of a sweep. The source may be one of the targets.
struct SweepImages {
    Plane from;
    Plane beforeLast;  ///< takes what all passes but one give
    Plane last;
    NppiSize size;

    /// Of a target: a source that is written over is in the caches already.
    Stores storesTo(const Plane& target, std::size_t pixelBytes) const {
        const auto pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
        return target == from ? Stores::cached : storesFor(3 * pixelBytes * pixels);
    }
};

/// Rows of an image that are swept from top to bottom by one thread, and where those above and below them are read.
struct Slab {
    std::ptrdiff_t top;
    std::ptrdiff_t bottom;
    Plane above;  ///< its row 0 is the first that a sweep from `top` reads
    Plane below;
};

/// An image's slabs. Where the source is a target too, the rows around their edges are copied beforehand: the
/// neighbouring slab's thread writes them.
template <typename Pixel>
class Slabs {
public:
    Slabs(const SweepImages& images, std::ptrdiff_t margin) : images_(images), margin_(margin) {
        const std::ptrdiff_t height = images.size.height;
        const std::ptrdiff_t usefulRows = std::max<std::ptrdiff_t>(8 * margin, (1 << 15) / images.size.width + 16);
        count_ = std::clamp<std::ptrdiff_t>(height / usefulRows, 1, static_cast<std::ptrdiff_t>(4 * usableThreads()));
        if (count_ == 1 || (images.from != images.beforeLast && images.from != images.last)) return;
        copyRowsAroundEdges();
    }
    ~Slabs() {
        if (copies_.base != nullptr) releaseBlock(copies_);
    }
    Slabs(const Slabs&) = delete;
    Slabs& operator=(const Slabs&) = delete;

    std::ptrdiff_t count() const { return count_; }

    Slab operator[](std::ptrdiff_t slab) const {
        const std::ptrdiff_t top = edge(slab), bottom = edge(slab + 1);
        return {top, bottom, rowsFrom(slab, -margin_), rowsFrom(slab + 1, 0)};
    }

private:
    std::ptrdiff_t edge(std::ptrdiff_t slab) const { return images_.size.height * slab / count_; }
    std::ptrdiff_t rowBytes() const { return images_.size.width * static_cast<std::ptrdiff_t>(sizeof(Pixel)); }

    /// The plane whose row 0 is the source's row at an edge plus an offset from -margin to margin - 1.
    Plane rowsFrom(std::ptrdiff_t slab, std::ptrdiff_t offset) const {
        if (copies_.base == nullptr || slab == 0 || slab == count_) {
            return {images_.from.first + (edge(slab) + offset) * images_.from.step, images_.from.step};
        }
        return {copies_.base + (2 * margin_ * (slab - 1) + margin_ + offset) * rowBytes(), rowBytes()};
    }

    void copyRowsAroundEdges() {
        const auto rows = static_cast<std::size_t>(2 * margin_ * (count_ - 1));
        copies_ = acquireBlock(rows * static_cast<std::size_t>(rowBytes()));
        if (copies_.base == nullptr) throw std::bad_alloc();
        parallelFor(rows, 64, [this](std::size_t begin, std::size_t end) {
            for (auto row = static_cast<std::ptrdiff_t>(begin); row < static_cast<std::ptrdiff_t>(end); ++row) {
                const std::ptrdiff_t y = edge(row / (2 * margin_) + 1) + row % (2 * margin_) - margin_;
                std::copy_n(images_.from.first + y * images_.from.step, rowBytes(), copies_.base + row * rowBytes());
            }
        });
    }

    const SweepImages& images_;
    std::ptrdiff_t margin_;
    std::ptrdiff_t count_;
    Block copies_;
};

}  // namespace zel::host
