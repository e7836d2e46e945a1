#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "TestImages.h"
#include "tarnway_cuda/CudaImageView.h"
#include "zel/InteractionInterface.h"
#include "zel/TarnwayImage.h"
#include "zel/algorithms/CudaBoxFilter2d.h"

namespace zel::test {

/// How a test runs an image-to-image filter: where its images lie, and whether in tiles.
struct Placement {
    bool inputOnDevice = false;
    bool outputOnDevice = false;
    Vector2<unsigned> tile{0, 0};  ///< (0, 0) for none
};

inline std::vector<Placement> allPlacements(Vector2<unsigned> tile) {
    return {{false, false, tile}, {false, true, tile}, {true, false, tile}, {true, true, tile}};
}

/// The image on the device, the same voxels in it.
inline std::unique_ptr<ImageModel> onDevice(const HostImage& image) {
    auto result = std::make_unique<TarnwayImage>(tarnway_cuda::CudaImageView::allocate(
        static_cast<tarnway::ElementType>(image.getDataType()), image.getDimension(0), image.getDimension(1)));
    std::vector<std::byte> row(image.rowPitchBytes());
    for (std::size_t y = 0; y < image.getDimension(1); ++y) {
        image.readRow(image.getDimension(0), row.data(), 0, y, 0, 0, 0);
        result->writeRow(image.getDimension(0), row.data(), 0, y, 0, 0, 0);
    }
    return result;
}

/// A box filter with its images in place. Run `filter` as often as you like; the result is in `output`.
struct BoxFilterRun {
    BoxFilterRun(HostImage& image, unsigned kernelX, unsigned kernelY, const Placement& placement)
        : hostOutput(image.getDataType(), {image.getDimension(0), image.getDimension(1)}) {
        if (placement.inputOnDevice) deviceInput = onDevice(image);
        if (placement.outputOnDevice) deviceOutput = onDevice(hostOutput);
        filter.inputImage = placement.inputOnDevice ? deviceInput.get() : &image;
        filter.outputImage = placement.outputOnDevice ? deviceOutput.get() : &hostOutput;
        filter.kernelSizeX = kernelX;
        filter.kernelSizeY = kernelY;
        filter.tilingMode = placement.tile == Vector2<unsigned>{} ? 0 : 1;
        filter.tileSize = placement.tile;
    }

    template <typename T>
    std::vector<T> result() const {
        return readAll<T>(*filter.outputImage.get());
    }

    HostImage hostOutput;
    std::unique_ptr<ImageModel> deviceInput;
    std::unique_ptr<ImageModel> deviceOutput;
    cuda::CudaBoxFilter2d filter;
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
