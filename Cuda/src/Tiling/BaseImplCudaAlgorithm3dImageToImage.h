#pragma once

#include "TiledImageToImage.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"

namespace zel::cuda {

/// What the 3D driver adds to TiledImageToImage.
struct VolumeTiles {
    static Vector3<unsigned> imageSize(const ImageModel& image) {
        return {static_cast<unsigned>(image.getDimension(0)), static_cast<unsigned>(image.getDimension(1)),
                static_cast<unsigned>(image.getDimension(2))};
    }
    static Vector3<unsigned> blockSize(const Vector3<unsigned>& tileSize) { return tileSize; }

    template <typename T>
    static void upload(const ImageModel& image, const DeviceVolume<T>& device, cudaStream_t stream) {
        copyImageToDevice3d(image, device.data, device.pitch, device.slicePitch, 0, 0, stream);
    }
    template <typename T>
    static void download(const DeviceVolume<T>& device, ImageModel& image, cudaStream_t stream) {
        copyDeviceToImage3d(device.data, device.pitch, device.slicePitch, image, 0, 0, stream);
    }

    template <typename Functor>
    static void prepare(Functor& functor, const Vector3<unsigned>& size) {
        if (!functor.direct) functor.intermediate->resize(size.x, size.y, size.z, false);
    }
    template <typename Functor, typename Tin, typename Tout>
    static void process(Functor& functor, const DeviceVolume<const Tin>& source, const DeviceVolume<Tout>& target,
                        const Vector3<unsigned>& size, cudaStream_t stream) {
        const auto processThrough = [&](const auto& work) {
            functor.process(source.data, source.pitch, source.slicePitch, work.data, work.pitch, work.slicePitch,
                            target.data, target.pitch, target.slicePitch, size, stream);
        };
        if (functor.direct) {
            processThrough(target);
        } else {
            processThrough(volumeOf(*functor.intermediate));
        }
    }
};

/// Runs a 3D filter over an image, whole or in tiles of the algorithm's `tileSize`. All that a filter adds is a functor
/// and the overlap that its neighbourhood needs.
///
/// A functor offers
/// - `direct`, whether the target itself can be the work area of its passes, and else `intermediate`, a pointer to a
///   DeviceImage<float> for it, which the driver makes large enough before a tile's data moves;
/// - `process(src, srcPitch, srcSlicePitch, tmp, tmpPitch, tmpSlicePitch, dst, dstPitch, dstSlicePitch, size, stream)`
///   for a work area of either type: filters a tile in device memory, pitches in bytes. It sees the tile only; it
///   reports failures by exceptions. It ends its first N - 1 steps itself: synchronises the device, polls, `nextStep`.
///
/// @tparam N  processing steps of a tile.
template <typename Algo, typename Tin, typename Tout, typename Functor, int N>
class BaseImplCudaAlgorithm3dImageToImage : public TiledImageToImage<VolumeTiles, Algo, Tin, Tout, Functor, N> {
    using TiledImageToImage<VolumeTiles, Algo, Tin, Tout, Functor, N>::TiledImageToImage;
};

}  // namespace zel::cuda
