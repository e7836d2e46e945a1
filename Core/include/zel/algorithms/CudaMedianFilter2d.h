#pragma once

#include "zel/algorithms/RunnerAlgorithm.h"

namespace zel::cuda {

/// Median of a 2D image over a square of (2 kernelRadius + 1) pixels. The image is mirrored at its edges; the edge
/// pixel is not repeated.
class ZEL_API CudaMedianFilter2d final : public RunnerAlgorithm {
public:
    using InstanceTypes = TypeList<std::uint8_t, std::uint16_t, std::int16_t, float>;
    using TypesAsFloat = TypeList<std::int8_t>;

    CudaMedianFilter2d();
    ~CudaMedianFilter2d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};
    /// The mask of 2 radius + 1 pixels has to fit NPP's sizes.
    Property<unsigned> kernelRadius{"kernelRadius", 1, {.high = maxLength / 2, .unit = "pixels"}};
    Property<int> tilingMode{"tilingMode", 0};  ///< 1 cuts the image into tiles of tileSize
    Property<Vector2<unsigned>> tileSize{"tileSize", {1024, 1024}, tileLength};
    Property<CudaContext*> cudaContext{"cudaContext"};
    PropertyWriteImage outputImage{"outputImage"};  ///< size and type of the input; not the same memory

protected:
    void validate() const override;
    std::unique_ptr<AdaptedImages> adaptImages() override;
};

}  // namespace zel::cuda
