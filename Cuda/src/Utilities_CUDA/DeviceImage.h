#pragma once

#include <cstddef>
#include <memory>

#include "DeviceMemory_CUDA.h"

namespace zel::cuda {

/// A device buffer of up to three dimensions that keeps its memory as long as it fits. After a `resize` that kept the
/// memory only `pitch`, `slicePitch` and `data` may be relied on: the logical size is then known to the caller alone.
template <typename T>
class DeviceImage {
public:
    /// A size of 0 is legal. @param pitched  whether the runtime pads the rows.
    DeviceImage(std::size_t width, std::size_t height, std::size_t depth, bool pitched) : pitched_(pitched) {
        resize(width, height, depth, true);
    }
    DeviceImage(std::size_t width, std::size_t height, bool pitched) : DeviceImage(width, height, 1, pitched) {}

    /// Makes room for the size; contents are undefined afterwards.
    /// @param exact  true: the memory may stay only when height and depth are the same. false: also when it is larger.
    /// @throws RuntimeError when the memory cannot be had; the buffer then holds none.
    void resize(std::size_t width, std::size_t height, std::size_t depth, bool exact) {
        if (fits(width, height, depth, exact)) return;
        // The old memory goes first, so that the peak is that of one buffer.
        data_.reset();
        const std::size_t rowBytes = saturatingProduct(width, sizeof(T));
        if (pitched_) {
            data_ = allocateDevicePitched(pitch_, rowBytes, height, depth);
        } else {
            pitch_ = rowBytes;
            data_ = allocateDeviceMemory(saturatingProduct(saturatingProduct(rowBytes, height), depth));
        }
        slicePitch_ = height * pitch_;
        width_ = width;
        height_ = height;
        depth_ = depth;
    }
    void resize(std::size_t width, std::size_t height, bool exact) { resize(width, height, 1, exact); }

    void clear() {
        data_.reset();
        width_ = height_ = depth_ = pitch_ = slicePitch_ = 0;
    }

    T* data() { return static_cast<T*>(data_.get()); }
    const T* data() const { return static_cast<const T*>(data_.get()); }
    std::size_t pitch() const { return pitch_; }            ///< bytes from row to row
    std::size_t slicePitch() const { return slicePitch_; }  ///< bytes from slice to slice
    std::size_t width() const { return width_; }            ///< of the last allocation, as the two below
    std::size_t height() const { return height_; }
    std::size_t depth() const { return depth_; }

private:
    bool fits(std::size_t width, std::size_t height, std::size_t depth, bool exact) const {
        if (width == width_ && height == height_ && depth == depth_) return true;
        if (pitch_ >= saturatingProduct(width, sizeof(T))) {
            if (exact) return height == height_ && depth == depth_;
            if (height <= height_ && depth <= depth_) return true;
        }
        return !exact && width <= width_ && height <= height_ && depth <= depth_;
    }

    std::size_t width_ = 0;
    std::size_t height_ = 0;
    std::size_t depth_ = 0;
    std::shared_ptr<void> data_;
    std::size_t pitch_ = 0;
    std::size_t slicePitch_ = 0;
    bool pitched_;
};

}  // namespace zel::cuda
