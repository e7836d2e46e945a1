#pragma once

#include "zel/algorithms/RunnerAlgorithm.h"

namespace zel::cuda {

/// Moving average of a 2D image over a rectangle. The image's edge pixels are repeated outwards.
///
/// The mean at (x, y) covers kernelSizeX pixels from x - kernelSizeX / 2 (rounded down) on, and along y likewise. Means
/// of integers are truncated toward zero. Pixels of int8 are summed as float32: exactly in rectangles of up to 131072
/// pixels (2^24 / 128), such as 362 x 362; in larger ones some means are off by one.
class ZEL_API CudaBoxFilter2d final : public RunnerAlgorithm {
public:
    using InstanceTypes = TypeList<std::uint8_t, std::uint16_t, std::int16_t, float>;
    using TypesAsFloat = TypeList<std::int8_t>;

    CudaBoxFilter2d();
    ~CudaBoxFilter2d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};
    Property<unsigned> kernelSizeX{"kernelSizeX", 3, {.low = 1, .high = maxLength, .unit = "pixels"}};
    Property<unsigned> kernelSizeY{"kernelSizeY", 3, {.low = 1, .high = maxLength, .unit = "pixels"}};
    Property<int> tilingMode{"tilingMode", 0};  ///< 1 cuts the image into tiles of tileSize
    Property<Vector2<unsigned>> tileSize{"tileSize", {1024, 1024}, tileLength};
    Property<CudaContext*> cudaContext{"cudaContext"};
    PropertyWriteImage outputImage{"outputImage"};  ///< size and type of the input; not the same memory

protected:
    void validate() const override;
    std::unique_ptr<AdaptedImages> adaptImages() override;
};

}  // namespace zel::cuda
