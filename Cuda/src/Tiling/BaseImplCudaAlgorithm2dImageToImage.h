#pragma once

#include "TiledImageToImage.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"

namespace zel::cuda {

/// What the 2D driver adds to TiledImageToImage. Its images have one slice.
struct PlaneTiles {
    static Vector3<unsigned> imageSize(const ImageModel& image) {
        return {static_cast<unsigned>(image.getDimension(0)), static_cast<unsigned>(image.getDimension(1)), 1};
    }
    static Vector3<unsigned> blockSize(const Vector2<unsigned>& tileSize) { return {tileSize.x, tileSize.y, 1}; }

    template <typename T>
    static void upload(const ImageModel& image, const DeviceVolume<T>& device, cudaStream_t stream) {
        copyImageToDevice2d(image, device.data, device.pitch, 0, 0, stream);
    }
    template <typename T>
    static void download(const DeviceVolume<T>& device, ImageModel& image, cudaStream_t stream) {
        copyDeviceToImage2d(device.data, device.pitch, image, 0, 0, stream);
    }

    template <typename Functor>
    static void prepare(Functor& functor, const Vector3<unsigned>& size) {
        if constexpr (requires { functor.prepare(size); }) functor.prepare(size);
    }
    template <typename Functor, typename Tin, typename Tout>
    static void process(Functor& functor, const DeviceVolume<const Tin>& source, const DeviceVolume<Tout>& target,
                        const Vector3<unsigned>& size, cudaStream_t) {
        functor.process(source.data, source.pitch, target.data, target.pitch, size);
    }
};

/// Runs a 2D filter over an image, whole or in tiles of the algorithm's `tileSize`. All that a filter adds is a functor
/// and the overlap that its neighbourhood needs.
///
/// A functor offers
/// - `prepare(size)`, if it likes: called before a tile's data moves, to make its own device scratch large enough;
/// - `process(src, srcPitch, dst, dstPitch, size)`: filters size.x by size.y pixels in device memory, pitches in bytes.
///   It sees the tile only; it reports failures by exceptions and need not synchronise.
///
/// @tparam N  processing steps of a tile.
template <typename Algo, typename Tin, typename Tout, typename Functor, int N = 1>
class BaseImplCudaAlgorithm2dImageToImage : public TiledImageToImage<PlaneTiles, Algo, Tin, Tout, Functor, N> {
    using TiledImageToImage<PlaneTiles, Algo, Tin, Tout, Functor, N>::TiledImageToImage;
};

}  // namespace zel::cuda
