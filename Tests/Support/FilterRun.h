#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "TestImages.h"
#include "tarnway_cuda/CudaImageView.h"
#include "zel/BaseAlgorithm.h"
#include "zel/InteractionInterface.h"
#include "zel/TarnwayImage.h"
#include "zel/Vector.h"

namespace zel::test {

/// How a test runs an image-to-image filter: where its images lie, and whether in tiles.
template <typename Tile>
struct PlacementOf {
    bool inputOnDevice = false;
    bool outputOnDevice = false;
    Tile tile{};  ///< all 0 for none

    bool tiled() const { return tile != Tile{}; }
};
using Placement = PlacementOf<Vector2<unsigned>>;
using Placement3d = PlacementOf<Vector3<unsigned>>;

template <typename Tile = Vector2<unsigned>>
std::vector<PlacementOf<Tile>> allPlacements(const std::type_identity_t<Tile>& tile) {
    return {{false, false, tile}, {false, true, tile}, {true, false, tile}, {true, true, tile}};
}

/// The image on the device, the same voxels in it.
inline std::unique_ptr<ImageModel> onDevice(const HostImage& image) {
    auto result = std::make_unique<TarnwayImage>(
        tarnway_cuda::CudaImageView::allocate(static_cast<tarnway::ElementType>(image.getDataType()),
                                              image.getDimension(0), image.getDimension(1), image.getDimension(2)));
    copyRows(image, *result);
    return result;
}

/// A filter with its images and its tile in place. Run `filter` as often as you like.
template <typename Filter, typename Tile = Vector2<unsigned>>
struct FilterRun {
    FilterRun(HostImage& image, VoxelTypes outputType, const PlacementOf<Tile>& placement)
        : hostOutput(outputType, {image.getDimension(0), image.getDimension(1), image.getDimension(2)}) {
        if (placement.inputOnDevice) deviceInput = onDevice(image);
        if (placement.outputOnDevice) deviceOutput = onDevice(hostOutput);
        filter.inputImage = placement.inputOnDevice ? deviceInput.get() : &image;
        filter.outputImage = placement.outputOnDevice ? deviceOutput.get() : &hostOutput;
        filter.tilingMode = placement.tiled() ? 1 : 0;
        filter.tileSize = placement.tile;
    }

    template <typename T>
    std::vector<T> result() const {
        return readAll<T>(*filter.outputImage.get());
    }

    HostImage hostOutput;
    std::unique_ptr<ImageModel> deviceInput;
    std::unique_ptr<ImageModel> deviceOutput;
    Filter filter;
};

/// Counts what a run reports, and cancels it when so many steps are done.
class StepWatch : public InteractionInterface {
public:
    static constexpr std::uint64_t never = UINT64_MAX;

    explicit StepWatch(BaseAlgorithm* algorithm = nullptr, std::uint64_t cancelAt = never)
        : algorithm_(algorithm), cancelAt_(cancelAt) {}

    void progress(std::uint64_t done, std::uint64_t total) override {
        ++reports_;
        total_ = total;
        if (done == cancelAt_) algorithm_->cancel();
    }

    std::uint64_t total() const { return total_; }
    /// Calls of nextStep: every report but the first, if none was left for the end of the run.
    std::uint64_t steps() const { return reports_ - 1; }

private:
    BaseAlgorithm* algorithm_;
    std::uint64_t cancelAt_;
    std::uint64_t total_ = 0;
    std::uint64_t reports_ = 0;
};

}  // namespace zel::test
