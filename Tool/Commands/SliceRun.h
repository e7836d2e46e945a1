#pragma once

#include <cstdint>
#include <functional>

#include "Cli/Interrupt.h"
#include "Commands/RunOptions.h"
#include "zel/CudaContext.h"
#include "zel/ImageModel.h"
#include "zel/InteractionInterface.h"

namespace zel::tool {

/// What came of running an algorithm.
struct RunReport {
    double seconds = 0;       ///< in the algorithm, without files and without bringing images to the device
    std::uint64_t steps = 0;  ///< of progress, as the algorithm counted them
};

/// One run of an algorithm on one slice.
using SliceWork = std::function<void(const ImageModel& input, ImageModel& output, InteractionInterface* progress)>;

/// Calls work for each slice (x, y) of input, with the slice of output that belongs to it. Both images have the same
/// size. Where the options say so, work gets slices in the memory of the device.
/// @throws Interrupted between slices, after a signal.
RunReport runSlices(const ImageModel& input, ImageModel& output, const RunOptions& options, const SliceWork& work);

/// Runs an algorithm for 2D images on each slice of an image.
/// @param configure  sets the properties of its own: configure(algorithm).
/// @throws what the algorithm throws; ExceptionCancelation or Interrupted after a signal.
template <typename Algorithm, typename Configure>
RunReport runFilter2d(const ImageModel& input, ImageModel& output, const RunOptions& options,
                      const Configure& configure) {
    CudaContext context;
    if (options.device) context.deviceId = static_cast<int>(*options.device);
    Algorithm algorithm;
    algorithm.cudaContext = &context;
    if (options.tile) {
        algorithm.tilingMode = 1;
        algorithm.tileSize = *options.tile;
    }
    configure(algorithm);

    const CancelOnInterrupt cancelOnInterrupt(algorithm);
    return runSlices(input, output, options,
                     [&](const ImageModel& source, ImageModel& result, InteractionInterface* progress) {
                         algorithm.inputImage = &source;
                         algorithm.outputImage = &result;
                         algorithm.run(progress);
                     });
}

}  // namespace zel::tool
