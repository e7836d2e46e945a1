#pragma once

#include <vector>

#include "zel/HostImage.h"

namespace zel::children {

/// The voxels of a volume as doubles, for reading between them.
class TrilinearVolume {
public:
    /// @throws RuntimeError when the image cannot be read.
    explicit TrilinearVolume(const ImageModel& image);

    const ImageSize& size() const { return size_; }

    /// Trilinear interpolation at a voxel position. @param x  from 0 to size().x - 1; y and z likewise.
    double at(double x, double y, double z) const;

private:
    ImageSize size_;
    std::vector<double> voxels_;
};

}  // namespace zel::children
