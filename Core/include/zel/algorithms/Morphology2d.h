#pragma once

#include "zel/algorithms/RunnerAlgorithm.h"

namespace zel::cuda {

/// What erosion, dilation, opening and closing of a 2D image have in common. The image's edge pixels are repeated
/// outwards.
class ZEL_API MorphologyAlgorithm2d : public RunnerAlgorithm {
public:
    using InstanceTypes = TypeList<std::uint8_t, std::uint16_t, float>;
    using TypesAsFloat = TypeList<std::int8_t, std::int16_t>;

    ~MorphologyAlgorithm2d() override;

    PropertyReadImage inputImage{"inputImage"};
    /// The mask of 2 radius + 1 pixels has to fit NPP's sizes.
    Property<unsigned> kernelRadius{"kernelRadius", 1, {.low = 1, .high = maxLength / 2, .unit = "pixels"}};
    /// 1 for the square of (2 kernelRadius + 1) pixels; any other value for the diamond |dx| + |dy| <= kernelRadius.
    PropertySingleChoice neighborhood{"neighborhood", 1};
    Property<int> tilingMode{"tilingMode", 0};  ///< 1 cuts the image into tiles of tileSize
    Property<Vector2<unsigned>> tileSize{"tileSize", {1024, 1024}, tileLength};
    Property<CudaContext*> cudaContext{"cudaContext"};
    PropertyWriteImage outputImage{"outputImage"};  ///< size and type of the input; not the same memory

protected:
    MorphologyAlgorithm2d();
    void validate() const override;
    std::unique_ptr<AdaptedImages> adaptImages() override;
};

/// Minimum over the neighbourhood of every pixel.
class ZEL_API CudaErosion2d final : public MorphologyAlgorithm2d {
public:
    CudaErosion2d();
    ~CudaErosion2d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }
};

/// Maximum over the neighbourhood of every pixel.
class ZEL_API CudaDilation2d final : public MorphologyAlgorithm2d {
public:
    CudaDilation2d();
    ~CudaDilation2d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }
};

/// Erosion, then dilation: takes away what is bright and smaller than the neighbourhood.
class ZEL_API CudaOpening2d final : public MorphologyAlgorithm2d {
public:
    CudaOpening2d();
    ~CudaOpening2d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }
};

/// Dilation, then erosion: takes away what is dark and smaller than the neighbourhood.
class ZEL_API CudaClosing2d final : public MorphologyAlgorithm2d {
public:
    CudaClosing2d();
    ~CudaClosing2d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }
};

}  // namespace zel::cuda
