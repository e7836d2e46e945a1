#pragma once

#include <memory>

#include "zel/LocatedImage.h"

namespace zel {

/// Sizes along the five axes; those not given are 1.
struct ImageSize {
    std::size_t x = 1;
    std::size_t y = 1;
    std::size_t z = 1;
    std::size_t i3 = 1;
    std::size_t i4 = 1;

    bool operator==(const ImageSize&) const = default;
};

/// An image in host memory, its own or the caller's.
class ZEL_API HostImage : public LocatedImage {
public:
    /// Owns its voxels, all 0 at first.
    /// @throws RuntimeError when the bytes cannot be counted or had.
    HostImage(VoxelTypes type, const ImageSize& size);

    /// Shows the caller's memory, which has to outlive the image.
    /// @param rowPitchBytes  from row to row, at least size.x voxels; 0 for rows without gaps. Slices follow without a
    ///                       gap after size.y rows. Only images without gaps have host data for a bulk copy.
    HostImage(VoxelTypes type, const ImageSize& size, void* voxels, std::size_t rowPitchBytes = 0);

    ~HostImage() override;
    HostImage(HostImage&&) noexcept;
    HostImage& operator=(HostImage&&) noexcept;

    std::size_t getDimension(const int& axis) const override { return dimensions_[static_cast<std::size_t>(axis)]; }
    VoxelTypes getDataType() const override { return type_; }
    bool readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                 std::size_t i4) const override;
    bool writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                  std::size_t i4) override;
    void* hostDataWritable() override { return isContiguous() ? voxels_ : nullptr; }
    const void* hostDataReadOnly() const override { return isContiguous() ? voxels_ : nullptr; }

    /// First voxel, whatever the pitch.
    void* data() { return voxels_; }
    const void* data() const { return voxels_; }
    std::size_t rowPitchBytes() const { return rowPitch_; }
    /// Bytes from the first voxel to behind the last one.
    std::size_t extentBytes() const;

private:
    struct FreeDeleter {
        void operator()(void* memory) const;
    };

    bool isContiguous() const;
    std::byte* rowAddress(std::size_t count, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                          std::size_t i4) const;

    VoxelTypes type_;
    std::array<std::size_t, 5> dimensions_;
    std::size_t rowPitch_;
    std::unique_ptr<void, FreeDeleter> owned_;
    void* voxels_;
};

}  // namespace zel
