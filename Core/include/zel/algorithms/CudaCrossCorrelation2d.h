#pragma once

#include "zel/Measurements.h"
#include "zel/algorithms/RunnerAlgorithm.h"

namespace zel::cuda {

/// Correlation of a 2D image with a small template at every pixel, by FFT, rescaled to -1 to 1. The image counts as 0
/// outside.
///
/// A correlationMode other than 0 and 1 is not refused: it works as 0 on an image in one piece, and as 1 in tiles.
class ZEL_API CudaCrossCorrelation2d final : public RunnerAlgorithm {
public:
    CudaCrossCorrelation2d();
    ~CudaCrossCorrelation2d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};
    PropertyReadImage inputTemplate{"inputTemplate"};            ///< type of the input; no larger than it
    PropertySingleChoice correlationMode{"correlationMode", 0};  ///< 0 plain, 1 local means removed
    Property<int> tilingMode{"tilingMode", 0};                   ///< 1 cuts the image into tiles of tileSize
    Property<Vector2<unsigned>> tileSize{"tileSize", {1024, 1024}, tileLength};
    Property<CudaContext*> cudaContext{"cudaContext"};
    PropertyWriteImage outputImage{"outputImage"};  ///< size of the input, float32; no memory of an input
    Property<CrossCorrelation2dMsr*> outputMeasurement{"outputMeasurement"};  ///< may be null

protected:
    void validate() const override;
};

}  // namespace zel::cuda
