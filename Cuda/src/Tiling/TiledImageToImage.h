#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <memory>

#include "DeviceVolume.h"
#include "Tile.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/BlockCutterManager.h"
#include "zel/ImageModel.h"

namespace zel::cuda {

/// What the drivers of 2D and of 3D filters share: it runs a filter over an image in host memory or on the GPU, in one
/// block or in overlapping tiles, counts the steps and polls for cancellation. Tiles are processed one after the other;
/// each step ends in a synchronisation of the device.
///
/// @tparam Dimensions  what differs between 2D and 3D, as static functions:
///                     `imageSize(image)` and `blockSize(tileSize)`, as the block cutter wants them;
///                     `upload(image, volume, stream)` and `download(volume, image, stream)`, which return when the
///                     data has arrived; and the calls of the functor, `prepare(functor, size)` before a tile's data
///                     moves and `process(functor, source, target, size, stream)`.
/// @tparam N           processing steps of a tile. `process` ends all but the last itself.
template <typename Dimensions, typename Algo, typename Tin, typename Tout, typename Functor, int N>
class TiledImageToImage : public AbstractPrivateImplementation {
public:
    using Size = Vector3<unsigned>;

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
        std::uint64_t blocks = 1;
        if (algorithm_->tilingMode == 1) {
            blocks = BlockCutterManager::allocateAndInitialize(blockCutter_, Dimensions::imageSize(*input_),
                                                               Dimensions::blockSize(algorithm_->tileSize), {1, 1, 1},
                                                               previousOverlap_, nextOverlap_);
        }
        setNumberOfSteps(stepsPerBlock(blocks) * blocks);
        if (blocks < 2) {
            runWhole();
        } else {
            runTiles();
        }
    }

private:
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
        const Size size = Dimensions::imageSize(*input_);
        DeviceImage<Tin> inputBuffer(0, 0, 0, true);
        if (!input_->isDeviceResident()) inputBuffer.resize(size.x, size.y, size.z, true);
        const DeviceVolume<const Tin> source = sourceOf(*input_, {}, inputBuffer);

        DeviceImage<Tout> outputBuffer(0, 0, 0, true);
        if (!output_->isDeviceResident()) outputBuffer.resize(size.x, size.y, size.z, true);
        const DeviceVolume<Tout> target = output_->isDeviceResident() ? residentOutput() : volumeOf(outputBuffer);

        Dimensions::prepare(*functor_, size);
        checkCudaStatus(cudaDeviceSynchronize());
        processTile(source, target, size);

        if (!output_->isDeviceResident()) {
            Dimensions::download(target, *output_, stream_);
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
        Dimensions::prepare(*functor_, size);

        const DeviceVolume<const Tin> source = sourceOf(tile.sourceIn(*input_), tile.origin, inputBuffer);

        const bool throughBuffer = !output_->isDeviceResident() || tile.hasOverlap();
        if (throughBuffer) outputBuffer.resize(size.x, size.y, size.z, true);
        const DeviceVolume<Tout> target = throughBuffer ? volumeOf(outputBuffer) : residentOutput().from(tile.origin);

        processTile(source, target, size);
        if (throughBuffer) storeValidPart(tile, target.from(tile.previous));
    }

    /// Where a part of the input lies on the device: in place, or uploaded into the buffer, which is a step.
    /// @param origin  of the part in the input.
    DeviceVolume<const Tin> sourceOf(const ImageModel& part, const Size& origin, DeviceImage<Tin>& buffer) {
        if (input_->isDeviceResident()) return residentInput().from(origin);
        const DeviceVolume<Tin> uploaded = volumeOf(buffer);
        Dimensions::upload(part, uploaded, stream_);
        endStep();
        return uploaded;
    }

    void processTile(const DeviceVolume<const Tin>& source, const DeviceVolume<Tout>& target, const Size& size) {
        Dimensions::process(*functor_, source, target, size, stream_);
        checkCudaStatus(cudaDeviceSynchronize());
        endStep();
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
            Dimensions::download(valid, place, stream_);
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

}  // namespace zel::cuda
