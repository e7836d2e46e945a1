#pragma once

#include <cuda_runtime.h>

#include <memory>

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
    Tile tile{};           ///< all 0 for none
    bool inPlace = false;  ///< what lies on the device is the host's memory, shown to it

    bool tiled() const { return tile != Tile{}; }
};
using Placement = PlacementOf<Vector2<unsigned>>;
using Placement3d = PlacementOf<Vector3<unsigned>>;

/// The image on the device, the same voxels in it.
inline std::unique_ptr<ImageModel> onDevice(const HostImage& image) {
    auto result = std::make_unique<TarnwayImage>(
        tarnway_cuda::CudaImageView::allocate(static_cast<tarnway::ElementType>(image.getDataType()),
                                              image.getDimension(0), image.getDimension(1), image.getDimension(2)));
    copyRows(image, *result);
    return result;
}

/// Whether the current device uses the host's memory in place.
inline bool deviceReadsHostMemory() {
    int device = 0, answer = 0;
    EXPECT_EQ(cudaGetDevice(&device), cudaSuccess);
    EXPECT_EQ(cudaDeviceGetAttribute(&answer, cudaDevAttrPageableMemoryAccess, device), cudaSuccess);
    return answer != 0;
}

/// A copy of the image on the device, or the image itself shown to it.
inline std::unique_ptr<ImageModel> onDevice(HostImage& image, bool inPlace) {
    if (!inPlace) return onDevice(image);
    return std::make_unique<TarnwayImage>(
        tarnway_cuda::CudaImageView::wrap(static_cast<tarnway::ElementType>(image.getDataType()), image.getDimension(0),
                                          image.getDimension(1), image.getDimension(2), image.data()));
}

/// A filter with its images and its tile in place. Run `filter` as often as you like.
template <typename Filter>
struct FilterRun {
    using Tile = std::remove_cvref_t<decltype(std::declval<Filter>().tileSize.get())>;

    FilterRun(HostImage& image, VoxelTypes outputType, const PlacementOf<Tile>& placement)
        : hostOutput(outputType, {image.getDimension(0), image.getDimension(1), image.getDimension(2)}) {
        if (placement.inputOnDevice) deviceInput = onDevice(image, placement.inPlace);
        if (placement.outputOnDevice) deviceOutput = onDevice(hostOutput, placement.inPlace);
        filter.inputImage = placement.inputOnDevice ? deviceInput.get() : &image;
        filter.outputImage = placement.outputOnDevice ? deviceOutput.get() : &hostOutput;
        filter.tilingMode = placement.tiled() ? 1 : 0;
        filter.tileSize = placement.tile;
    }

    HostImage hostOutput;
    std::unique_ptr<ImageModel> deviceInput;
    std::unique_ptr<ImageModel> deviceOutput;
    Filter filter;
};

/// The image that a filter makes; the first where it makes several.
template <typename Filter>
auto& outputOf(Filter& filter) {
    if constexpr (requires { filter.outputScoreImage; }) {
        return filter.outputScoreImage;
    } else {
        return filter.outputImage;
    }
}

/// What a run gives.
template <typename T, typename Run>
std::vector<T> resultOf(Run&& run) {
    run.filter.run();
    return readAll<T>(*outputOf(run.filter).get());
}

/// Notes what a run reports, and cancels it when so many steps are done.
struct StepWatch : InteractionInterface {
    explicit StepWatch(BaseAlgorithm* watched = nullptr, std::uint64_t at = UINT64_MAX)
        : algorithm(watched), cancelAt(at) {}

    void progress(std::uint64_t done, std::uint64_t ofAll) override {
        total = ofAll;
        reports.push_back(done);
        if (done == cancelAt) algorithm->cancel();
    }
    /// Calls of nextStep: every report but the first, if none was left for the end of the run.
    std::uint64_t steps() const { return reports.size() - 1; }

    BaseAlgorithm* algorithm;
    std::uint64_t cancelAt, total = 0;
    std::vector<std::uint64_t> reports;  ///< the steps that are done, each time
};

}  // namespace zel::test
