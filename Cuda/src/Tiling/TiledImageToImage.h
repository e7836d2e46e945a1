#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <memory>

#include "DeviceVolume.h"
#include "Tile.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/BlockCutterManager.h"
#include "zel/ImageModel.h"
#include "zel/RunPlan.h"

namespace zel::cuda {

/// Runs a 2D or 3D filter over an image in host memory or on the GPU, whole or in overlapping tiles of the algorithm's
/// `tileSize`, counts the steps and polls for cancellation. Tiles are processed one after the other; each step ends in
/// a synchronisation of the device. All that a filter adds is a functor and the overlap that its neighbourhood needs.
///
/// The functor of a 2D filter offers
/// - `prepare(size)`, if it likes: called before a tile's data moves, to make its own device scratch large enough, and
///   `scratchBytes(size)` of device memory that a tile of that size makes it hold, which is 0 without;
/// - `process(src, srcPitch, dst, dstPitch, size)`: filters size.x by size.y pixels in device memory, pitches in bytes.
///
/// That of a 3D filter offers
/// - `direct`, whether the target itself can be the work area of its passes, and else `intermediate`, a pointer to a
///   DeviceImage<float> for it, which the driver makes large enough before a tile's data moves;
/// - `scratchBytes(size)`, as above, without the intermediate;
/// - `process(src, srcPitch, srcSlicePitch, tmp, tmpPitch, tmpSlicePitch, dst, dstPitch, dstSlicePitch, size, stream)`
///   for a work area of either type.
///
/// `process` sees the tile only; it reports failures by exceptions. It ends all but the last of its steps itself:
/// synchronises the device, polls, `nextStep`.
///
/// @tparam N  processing steps of a tile.
template <int dimensions, typename Algo, typename Tin, typename Tout, typename FunctorType, int N>
class TiledImageToImage final : public AbstractPrivateImplementation {
public:
    using Size = Vector3<unsigned>;
    using Functor = FunctorType;

    /// @param overlap  pixels that the filter reads beyond a tile, on either side along each axis.
    /// @param functor  has to outlive the run.
    TiledImageToImage(Algo* algorithm, const Size& overlap, Functor* functor, cudaStream_t stream)
        : AbstractPrivateImplementation(algorithm),
          algorithm_(algorithm),
          input_(algorithm->inputImage),
          output_(algorithm->outputImage),
          previousOverlap_(overlap),
          nextOverlap_(overlap),
          functor_(functor),
          stream_(stream) {}

    void run() override {
        const std::uint64_t blocks = cut();
        setNumberOfSteps(stepsPerBlock(blocks) * blocks);
        if (blocks < 2) {
            runWhole();
        } else {
            runTiles();
        }
    }

    /// What run() is going to do.
    RunPlan plan() {
        const std::uint64_t blocks = cut();
        RunPlan plan{.steps = stepsPerBlock(blocks) * blocks, .tileSize = sizeOf(*input_)};
        if (blocks > 1) {
            plan.tiles = blockCutter_->getNumOfBlocks();
            plan.tileSize = blockCutter_->getBlockSize(0, 0, 0);  // no tile is larger
        }
        const Size& size = plan.tileSize;
        const std::uint64_t voxels = std::uint64_t{size.x} * size.y * size.z;
        // Tiles have both buffers, wherever the images lie.
        if (blocks > 1 || !input_->isDeviceResident()) plan.peakBytes += voxels * sizeof(Tin);
        if (blocks > 1 || !output_->isDeviceResident()) plan.peakBytes += voxels * sizeof(Tout);
        if constexpr (dimensions == 3) {
            if (!functor_->direct) plan.peakBytes += voxels * sizeof(float);
        }
        if constexpr (requires { functor_->scratchBytes(size); }) plan.peakBytes += functor_->scratchBytes(size);
        return plan;
    }

private:
    /// @return how many tiles there are; the cutter is for more than one.
    std::uint64_t cut() {
        if (algorithm_->tilingMode != 1) return 1;
        return BlockCutterManager::allocateAndInitialize(blockCutter_, sizeOf(*input_), blockSize(algorithm_->tileSize),
                                                         {1, 1, 1}, previousOverlap_, nextOverlap_);
    }

    static Size sizeOf(const ImageModel& image) {
        return {static_cast<unsigned>(image.getDimension(0)), static_cast<unsigned>(image.getDimension(1)),
                dimensions == 3 ? static_cast<unsigned>(image.getDimension(2)) : 1};
    }
    static Size blockSize(const Vector2<unsigned>& tileSize) { return {tileSize.x, tileSize.y, 1}; }
    static Size blockSize(const Vector3<unsigned>& tileSize) { return tileSize; }

    std::uint64_t stepsPerBlock(std::uint64_t blocks) const {
        const std::uint64_t upload = input_->isDeviceResident() ? 0 : 1;
        const bool hasOverlap = previousOverlap_ != Size{} || nextOverlap_ != Size{};
        // On the device a result needs a step of its own only when margins have to be cut off it.
        const bool copiesResult = !output_->isDeviceResident() || (blocks >= 2 && hasOverlap);
        return upload + N + (copiesResult ? 1 : 0);
    }

    void endStep() {
        throwIfCancelled();
        nextStep();
    }

    void runWhole() {
        const Size size = sizeOf(*input_);
        DeviceImage<Tin> inputBuffer(0, 0, 0, true);
        if (!input_->isDeviceResident()) inputBuffer.resize(size.x, size.y, size.z, true);
        const DeviceVolume<const Tin> source = sourceOf(*input_, {}, inputBuffer);

        DeviceImage<Tout> outputBuffer(0, 0, 0, true);
        if (!output_->isDeviceResident()) outputBuffer.resize(size.x, size.y, size.z, true);
        const DeviceVolume<Tout> target = output_->isDeviceResident() ? residentOutput() : volumeOf(outputBuffer);

        prepare(size);
        checkCudaStatus(cudaDeviceSynchronize());
        process(source, target, size);

        if (!output_->isDeviceResident()) {
            download(target, *output_);
            nextStep();  // without a poll: the result is complete
        }
    }

    void runTiles() {
        DeviceImage<Tin> inputBuffer(0, 0, 0, true);
        DeviceImage<Tout> outputBuffer(0, 0, 0, true);
        const Size grid = blockCutter_->getNumOfBlocks();
        for (unsigned k = 0; k < grid.z; ++k) {
            for (unsigned j = 0; j < grid.y; ++j) {
                for (unsigned i = 0; i < grid.x; ++i) runTile({*blockCutter_, i, j, k}, inputBuffer, outputBuffer);
            }
        }
    }

    void runTile(const Tile& tile, DeviceImage<Tin>& inputBuffer, DeviceImage<Tout>& outputBuffer) {
        const Size& size = tile.size;
        inputBuffer.resize(size.x, size.y, size.z, false);
        outputBuffer.resize(size.x, size.y, size.z, false);
        prepare(size);

        const DeviceVolume<const Tin> source = sourceOf(tile.sourceIn(*input_), tile.origin, inputBuffer);

        const bool throughBuffer = !output_->isDeviceResident() || tile.hasOverlap();
        if (throughBuffer) outputBuffer.resize(size.x, size.y, size.z, true);
        const DeviceVolume<Tout> target = throughBuffer ? volumeOf(outputBuffer) : residentOutput().from(tile.origin);

        process(source, target, size);
        if (throughBuffer) storeValidPart(tile, target.from(tile.previous));
    }

    void prepare(const Size& size) {
        if constexpr (dimensions == 3) {
            if (!functor_->direct) functor_->intermediate->resize(size.x, size.y, size.z, false);
        } else if constexpr (requires { functor_->prepare(size); }) {
            functor_->prepare(size);
        }
    }

    /// Where a part of the input lies on the device: in place, or uploaded into the buffer, which is a step.
    /// @param origin  of the part in the input.
    DeviceVolume<const Tin> sourceOf(const ImageModel& part, const Size& origin, DeviceImage<Tin>& buffer) {
        if (input_->isDeviceResident()) return residentInput().from(origin);
        if constexpr (dimensions == 2) {
            copyImageToDevice2d(part, buffer.data(), buffer.pitch(), 0, 0, stream_);
        } else {
            copyImageToDevice3d(part, buffer.data(), buffer.pitch(), buffer.slicePitch(), 0, 0, stream_);
        }
        endStep();
        return volumeOf(buffer);
    }

    void process(const DeviceVolume<const Tin>& source, const DeviceVolume<Tout>& target, const Size& size) {
        if constexpr (dimensions == 2) {
            functor_->process(source.data, source.pitch, target.data, target.pitch, size);
        } else if (functor_->direct) {
            processThrough(target, source, target, size);
        } else {
            processThrough(volumeOf(*functor_->intermediate), source, target, size);
        }
        checkCudaStatus(cudaDeviceSynchronize());
        endStep();
    }

    template <typename Work>
    void processThrough(const DeviceVolume<Work>& work, const DeviceVolume<const Tin>& source,
                        const DeviceVolume<Tout>& target, const Size& size) {
        functor_->process(source.data, source.pitch, source.slicePitch, work.data, work.pitch, work.slicePitch,
                          target.data, target.pitch, target.slicePitch, size, stream_);
    }

    void download(const DeviceVolume<Tout>& volume, ImageModel& image) {
        if constexpr (dimensions == 2) {
            copyDeviceToImage2d(volume.data, volume.pitch, image, 0, 0, stream_);
        } else {
            copyDeviceToImage3d(volume.data, volume.pitch, volume.slicePitch, image, 0, 0, stream_);
        }
    }

    /// Moves a tile without its margins to its place in the output.
    void storeValidPart(const Tile& tile, const DeviceVolume<Tout>& valid) {
        if (output_->isDeviceResident()) {
            const DeviceVolume<Tout> place = residentOutput().from(tile.validOrigin());
            const Size size = tile.validSize();
            copyDeviceVolume<Tout>(valid.data, valid.pitch, valid.slicePitch, place.data, place.pitch, place.slicePitch,
                                   size.x, size.y, size.z, stream_);
            checkCudaStatus(cudaDeviceSynchronize());
        } else {
            ImageModelSizeProxy place = tile.targetIn(*output_);
            download(valid, place);
        }
        endStep();
    }

    DeviceVolume<const Tin> residentInput() const {
        DeviceVolume<const Tin> volume;
        volume.data = static_cast<const Tin*>(deviceDataPointerConst(input_, volume.pitch));
        volume.slicePitch = deviceSlicePitch(input_);
        return volume;
    }
    DeviceVolume<Tout> residentOutput() const {
        DeviceVolume<Tout> volume;
        volume.data = static_cast<Tout*>(deviceDataPointer(output_, volume.pitch));
        volume.slicePitch = deviceSlicePitch(output_);
        return volume;
    }

    Algo* algorithm_;
    const ImageModel* input_;
    ImageModel* output_;
    Size previousOverlap_;
    Size nextOverlap_;
    Functor* functor_;
    cudaStream_t stream_;
    std::unique_ptr<BlockCutterManager> blockCutter_;
};

/// The driver of 2D filters; their images have one slice.
template <typename Algo, typename Tin, typename Tout, typename Functor, int N = 1>
using BaseImplCudaAlgorithm2dImageToImage = TiledImageToImage<2, Algo, Tin, Tout, Functor, N>;

template <typename Algo, typename Tin, typename Tout, typename Functor, int N>
using BaseImplCudaAlgorithm3dImageToImage = TiledImageToImage<3, Algo, Tin, Tout, Functor, N>;

}  // namespace zel::cuda
