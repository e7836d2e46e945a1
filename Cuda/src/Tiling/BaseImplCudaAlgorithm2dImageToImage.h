#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <memory>

#include "Kernels/OffsetBytes.h"
#include "Tile2d.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/BlockCutterManager.h"
#include "zel/ImageModel.h"

namespace zel::cuda {

/// Runs a 2D filter over an image in host memory or on the GPU, in one block or in overlapping tiles, counts the steps
/// and polls for cancellation. All that a filter adds is a functor and the overlap that its neighbourhood needs.
///
/// A functor offers
/// - `prepare(size)`, if it likes: called before a tile's data moves, to make its own device scratch large enough;
/// - `process(src, srcPitch, dst, dstPitch, size)`: filters size.x by size.y pixels in device memory, pitches in bytes.
///   It sees the tile only; it reports failures by exceptions and need not synchronise.
///
/// @tparam N  processing steps of a tile.
template <typename Algo, typename Tin, typename Tout, typename Functor, int N = 1>
class BaseImplCudaAlgorithm2dImageToImage : public AbstractPrivateImplementation {
public:
    using Size = Vector3<unsigned>;

    /// @param overlap  pixels that the filter reads beyond a tile, on either side along each axis.
    /// @param functor  has to outlive the run.
    BaseImplCudaAlgorithm2dImageToImage(Algo* algorithm, const Size& overlap, Functor* functor, cudaStream_t stream)
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
            const Vector2<unsigned> tile = algorithm_->tileSize;
            blocks = BlockCutterManager::allocateAndInitialize(
                blockCutter_, {width(), height(), 1}, {tile.x, tile.y, 1}, {1, 1, 1}, previousOverlap_, nextOverlap_);
        }
        setNumberOfSteps(stepsPerBlock(blocks) * blocks);
        if (blocks < 2) {
            runWhole();
        } else {
            runTiles();
        }
    }

private:
    unsigned width() const { return static_cast<unsigned>(input_->getDimension(0)); }
    unsigned height() const { return static_cast<unsigned>(input_->getDimension(1)); }

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

    void prepareFunctor(const Size& size) {
        if constexpr (requires { functor_->prepare(size); }) functor_->prepare(size);
    }

    void runWhole() {
        const Size size{width(), height(), 1};
        DeviceImage<Tin> inputBuffer(0, 0, 0, true);
        std::size_t srcPitch = 0;
        const Tin* src = static_cast<const Tin*>(deviceDataPointerConst(input_, srcPitch));
        if (!input_->isDeviceResident()) {
            inputBuffer.resize(size.x, size.y, true);
            src = inputBuffer.data();
            srcPitch = inputBuffer.pitch();
            copyImageToDevice2d(*input_, inputBuffer.data(), srcPitch, 0, 0, stream_);
            endStep();
        }

        DeviceImage<Tout> outputBuffer(0, 0, 0, true);
        std::size_t dstPitch = 0;
        Tout* dst = static_cast<Tout*>(deviceDataPointer(output_, dstPitch));
        if (!output_->isDeviceResident()) {
            outputBuffer.resize(size.x, size.y, true);
            dst = outputBuffer.data();
            dstPitch = outputBuffer.pitch();
        }

        prepareFunctor(size);
        checkCudaStatus(cudaDeviceSynchronize());
        functor_->process(src, srcPitch, dst, dstPitch, size);
        checkCudaStatus(cudaDeviceSynchronize());
        endStep();

        if (!output_->isDeviceResident()) {
            copyDeviceToImage2d(outputBuffer.data(), dstPitch, *output_, 0, 0, stream_);
            nextStep();  // without a poll: the result is complete
        }
    }

    void runTiles() {
        DeviceImage<Tin> inputBuffer(0, 0, 0, true);
        DeviceImage<Tout> outputBuffer(0, 0, 0, true);
        const Size grid = blockCutter_->getNumOfBlocks();
        for (unsigned j = 0; j < grid.y; ++j) {
            for (unsigned i = 0; i < grid.x; ++i) runTile(Tile2d(*blockCutter_, i, j), inputBuffer, outputBuffer);
        }
    }

    void runTile(const Tile2d& tile, DeviceImage<Tin>& inputBuffer, DeviceImage<Tout>& outputBuffer) {
        inputBuffer.resize(tile.size.x, tile.size.y, false);
        outputBuffer.resize(tile.size.x, tile.size.y, false);
        prepareFunctor(tile.size);

        std::size_t srcPitch = 0;
        const Tin* const src = tileSource(tile, inputBuffer, srcPitch);

        const bool throughBuffer = !output_->isDeviceResident() || tile.hasOverlap();
        std::size_t dstPitch = 0;
        Tout* dst = nullptr;
        if (throughBuffer) {
            outputBuffer.resize(tile.size.x, tile.size.y, true);
            dst = outputBuffer.data();
            dstPitch = outputBuffer.pitch();
        } else {
            dst = outputAt(tile.origin.x, tile.origin.y, dstPitch);
        }

        functor_->process(src, srcPitch, dst, dstPitch, tile.size);
        checkCudaStatus(cudaDeviceSynchronize());
        endStep();

        if (throughBuffer) storeValidPart(tile, outputBuffer);
    }

    const Tin* tileSource(const Tile2d& tile, DeviceImage<Tin>& inputBuffer, std::size_t& pitch) {
        if (input_->isDeviceResident()) {
            const auto* const image = static_cast<const Tin*>(deviceDataPointerConst(input_, pitch));
            return offsetBytes(image, tile.origin.y * pitch + tile.origin.x * sizeof(Tin));
        }
        pitch = inputBuffer.pitch();
        copyImageToDevice2d(tile.sourceIn(*input_), inputBuffer.data(), pitch, 0, 0, stream_);
        endStep();
        return inputBuffer.data();
    }

    Tout* outputAt(std::size_t x, std::size_t y, std::size_t& pitch) {
        auto* const image = static_cast<Tout*>(deviceDataPointer(output_, pitch));
        return offsetBytes(image, y * pitch + x * sizeof(Tout));
    }

    /// Moves a tile without its margins from the buffer to its place in the output.
    void storeValidPart(const Tile2d& tile, const DeviceImage<Tout>& outputBuffer) {
        const std::size_t pitch = outputBuffer.pitch();
        const Tout* const valid =
            offsetBytes(outputBuffer.data(), tile.previous.y * pitch + tile.previous.x * sizeof(Tout));
        if (output_->isDeviceResident()) {
            std::size_t dstPitch = 0;
            Tout* const dst = outputAt(tile.validX(), tile.validY(), dstPitch);
            checkCudaStatus(cudaMemcpy2DAsync(dst, dstPitch, valid, pitch, tile.validWidth() * sizeof(Tout),
                                              tile.validHeight(), cudaMemcpyDeviceToDevice, stream_));
            checkCudaStatus(cudaDeviceSynchronize());
        } else {
            ImageModelSizeProxy target = tile.targetIn(*output_);
            copyDeviceToImage2d(valid, pitch, target, 0, 0, stream_);
        }
        endStep();
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
