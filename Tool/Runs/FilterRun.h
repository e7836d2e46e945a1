#pragma once

#include <cstdint>
#include <functional>

#include "Runs/CancelOnInterrupt.h"
#include "Runs/RunOptions.h"
#include "zel/CudaContext.h"
#include "zel/ImageModel.h"
#include "zel/InteractionInterface.h"
#include "zel/Property.h"
#include "zel/Vector.h"

namespace zel::tool {

/// What came of running an algorithm.
struct RunReport {
    double seconds = 0;       ///< in the algorithm, without files and without bringing images to the device
    std::uint64_t steps = 0;  ///< of progress, as the algorithm counted them
};

/// What one run of an algorithm covers.
enum class RunPart { slice, volume };

/// One run of an algorithm on one part.
using PartWork = std::function<void(const ImageModel& input, ImageModel& output, InteractionInterface* progress)>;

/// Calls work for each slice (x, y), or each volume (x, y, z), of input, with the part of output that belongs to it.
/// Both images have the same size. Where the options say so, work gets parts in the memory of the device.
/// @throws Interrupted between parts, after a signal.
RunReport runParts(RunPart part, const ImageModel& input, ImageModel& output, const RunOptions& options,
                   const PartWork& work);

/// An algorithm's tile has the dimensions of the images that it takes.
inline RunPart partFor(const Property<Vector2<unsigned>>&) {
    return RunPart::slice;
}
inline RunPart partFor(const Property<Vector3<unsigned>>&) {
    return RunPart::volume;
}

inline void setTile(Property<Vector2<unsigned>>& tileSize, const TileOption& tile, const ImageModel&) {
    tileSize = {tile.width, tile.height};
}
inline void setTile(Property<Vector3<unsigned>>& tileSize, const TileOption& tile, const ImageModel& image) {
    tileSize = {tile.width, tile.height, tile.depth.value_or(static_cast<unsigned>(image.getDimension(2)))};
}

/// Runs an algorithm on an image: one for 2D images on each slice, one for 3D images on each volume.
/// @param configure  sets the properties of its own: configure(algorithm).
/// @throws what the algorithm throws; ExceptionCancelation or Interrupted after a signal.
template <typename Algorithm, typename Configure>
RunReport runFilter(const ImageModel& input, ImageModel& output, const RunOptions& options,
                    const Configure& configure) {
    CudaContext context;
    if (options.device) context.deviceId = static_cast<int>(*options.device);
    Algorithm algorithm;
    algorithm.cudaContext = &context;
    if (options.tile) {
        algorithm.tilingMode = 1;
        setTile(algorithm.tileSize, *options.tile, input);
    }
    configure(algorithm);

    const CancelOnInterrupt cancelOnInterrupt(algorithm);
    return runParts(partFor(algorithm.tileSize), input, output, options,
                    [&](const ImageModel& source, ImageModel& result, InteractionInterface* progress) {
                        algorithm.inputImage = &source;
                        algorithm.outputImage = &result;
                        algorithm.run(progress);
                    });
}

}  // namespace zel::tool
