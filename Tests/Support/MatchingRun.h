#pragma once

#include <optional>

#include "FilterRun.h"
#include "zel/algorithms/CudaTemplateMatching3d.h"

namespace zel::test {

inline std::shared_ptr<const tarnway::DataFrameView> tableOf(std::vector<tarnway::DataFrameView::Column> columns) {
    return std::make_shared<const tarnway::DataFrameView>(std::move(columns));
}

/// A template matching with its images in place. Add a mask or a filter to `filter`; run it as often as you like.
struct MatchingRun {
    MatchingRun(HostImage& image, const HostImage& templateImage, VoxelTypes indexType, const Placement3d& placement,
                std::shared_ptr<const tarnway::DataFrameView> table = nullptr)
        : hostScore(VoxelTypes::float32, {image.getDimension(0), image.getDimension(1), image.getDimension(2)}),
          hostIndex(indexType, {image.getDimension(0), image.getDimension(1), image.getDimension(2)}) {
        if (placement.inputOnDevice) deviceInput = onDevice(image, placement.inPlace);
        if (placement.outputOnDevice) {
            deviceScore = onDevice(hostScore, placement.inPlace);
            deviceIndex = onDevice(hostIndex, placement.inPlace);
        }
        filter.inputImage = placement.inputOnDevice ? deviceInput.get() : &image;
        filter.inputTemplate = &templateImage;
        filter.outputScoreImage = placement.outputOnDevice ? deviceScore.get() : &hostScore;
        filter.outputIndexImage = placement.outputOnDevice ? deviceIndex.get() : &hostIndex;
        filter.tilingMode = placement.tiled() ? 1 : 0;
        filter.tileSize = placement.tile;
        filter.transformationTable = std::move(table);
    }

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

/// What onEachWay gives a matching.
struct MatchingWay {
    std::uint64_t rows;
    bool hasMask, isFiltered, isTiled;
};

/// check(run, way) for a small matching with and without a table, a mask of either kind, a frequency filter, tiles,
/// and with the spacing of the image or another one.
template <typename Check>
void onEachWay(const Check& check) {
    HostImage image = randomImage<float>({14, 12, 11}, 6), filter(VoxelTypes::float32, {40, 40, 40});
    HostImage sought[]{randomImage<float>({5, 4, 3}, 7), randomImage<float>({5, 4, 3}, 7)};
    sought[1].setSpacing(0, 1.5);
    std::fill_n(voxels<float>(filter), 40 * 40 * 40, 1.0F);
    const std::pair<std::shared_ptr<const tarnway::DataFrameView>, std::uint64_t> tables[]{
        {nullptr, 1},
        {tableOf({{"phi", {0.5, 0}}}), 2},
        {tableOf({{"scaleX", {1, 1.4}}, {"theta", {0.2, 0}}}), 2},
        {tableOf({{"psi", {}}}), 0}};
    for (const auto& [table, rows] : tables)
        for (unsigned choice = 0; choice < 32; ++choice) {
            SCOPED_TRACE(testing::Message() << rows << " rows, choice " << choice);
            const MatchingWay way{rows, (choice & 1) != 0, (choice & 4) != 0, (choice & 8) != 0};
            MatchingRun run(image, sought[choice / 16], VoxelTypes::uint8, {}, table);
            if (way.hasMask) run.filter.inputMask = &sought[choice / 16];
            run.filter.maskFollowsTransformation = (choice & 2) != 0;
            if (way.isFiltered) run.filter.frequencyFilter = &filter;
            run.filter.tilingMode = way.isTiled ? 1 : 0;
            run.filter.tileSize = {12, 30, 30};
            check(run, way);
        }
}

}  // namespace zel::test
