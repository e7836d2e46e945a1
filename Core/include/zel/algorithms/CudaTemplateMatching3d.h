#pragma once

#include "tarnway/DataFrameView.h"
#include "zel/algorithms/RunnerAlgorithm.h"

namespace zel::cuda {

/// Finds a 3D template in a 3D image under many rotations and scales: the best normalised cross-correlation over all
/// rows of a table, at every voxel.
class ZEL_API CudaTemplateMatching3d final : public RunnerAlgorithm {
public:
    CudaTemplateMatching3d();
    ~CudaTemplateMatching3d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};
    PropertyReadImage inputTemplate{"inputTemplate"};  ///< type of the input; no larger than it
    PropertyReadImage inputMask{
        "inputMask"};  ///< weights of the template's voxels, of its size and spacing; may be null
    /// Zero frequency at the centre; at least the largest box that a row gives the template, and one more along x. May
    /// be null.
    PropertyReadImage frequencyFilter{"frequencyFilter"};
    Property<bool> maskFollowsTransformation{"maskFollowsTransformation", false};
    /// Columns of TemplateTransformationInfo; null for the template as it is.
    Property<std::shared_ptr<const tarnway::DataFrameView>> transformationTable{"transformationTable"};
    Property<int> tilingMode{"tilingMode", 0};  ///< 1 cuts the image into tiles of tileSize
    Property<Vector3<unsigned>> tileSize{"tileSize", {256, 256, 256}, tileLength};
    Property<CudaContext*> cudaContext{"cudaContext"};
    PropertyWriteImage outputScoreImage{"outputScoreImage"};  ///< size of the input, float32
    PropertyWriteImage outputIndexImage{"outputIndexImage"};  ///< size of the input; uint8, uint16 or uint32

protected:
    void validate() const override;
};

}  // namespace zel::cuda
