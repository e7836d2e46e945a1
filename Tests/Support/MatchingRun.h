#pragma once

#include <optional>

#include "FilterRun.h"
#include "zel/algorithms/CudaTemplateMatching3d.h"

namespace zel::test {

inline std::shared_ptr<const tarnway::DataFrameView> tableOf(std::vector<tarnway::DataFrameView::Column> columns) {
    return std::make_shared<const tarnway::DataFrameView>(std::move(columns));
}

/// A template matching with its images in place. Add a mask, a filter or a table to `filter`; run it as often as you
/// like.
struct MatchingRun {
    MatchingRun(HostImage& image, const HostImage& templateImage, VoxelTypes indexType, const Placement3d& placement)
        : hostScore(VoxelTypes::float32, {image.getDimension(0), image.getDimension(1), image.getDimension(2)}),
          hostIndex(indexType, {image.getDimension(0), image.getDimension(1), image.getDimension(2)}) {
        if (placement.inputOnDevice) deviceInput = onDevice(image);
        if (placement.outputOnDevice) {
            deviceScore = onDevice(hostScore);
            deviceIndex = onDevice(hostIndex);
        }
        filter.inputImage = placement.inputOnDevice ? deviceInput.get() : &image;
        filter.inputTemplate = &templateImage;
        filter.outputScoreImage = placement.outputOnDevice ? deviceScore.get() : &hostScore;
        filter.outputIndexImage = placement.outputOnDevice ? deviceIndex.get() : &hostIndex;
        filter.tilingMode = placement.tiled() ? 1 : 0;
        filter.tileSize = placement.tile;
    }

    std::vector<float> scores() { return readAll<float>(*filter.outputScoreImage.get()); }
    template <typename L>
    std::vector<L> rows() {
        return readAll<L>(*filter.outputIndexImage.get());
    }

    HostImage hostScore;
    HostImage hostIndex;
    std::unique_ptr<ImageModel> deviceInput;
    std::unique_ptr<ImageModel> deviceScore;
    std::unique_ptr<ImageModel> deviceIndex;
    cuda::CudaTemplateMatching3d filter;
};

}  // namespace zel::test
