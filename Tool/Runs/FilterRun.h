#pragma once

#include <cstdint>
#include <functional>

#include "Runs/CancelOnInterrupt.h"
#include "Runs/Place.h"
#include "Runs/RunOptions.h"
#include "Runs/TileChoice.h"
#include "zel/HostImage.h"
#include "zel/InteractionInterface.h"
#include "zel/Property.h"
#include "zel/Vector.h"

namespace zel::tool {

/// What a run of an algorithm took.
struct RunReport {
    double seconds = 0;            ///< in the algorithm, without files and without copies to and from the device
    std::uint64_t steps = 0;       ///< of progress, as the algorithm counted them
    std::uint64_t imageBytes = 0;  ///< of input and output of a part, where they lie on the device
    RunPlan plan{};                ///< of a part, without these images
    std::size_t parts = 1;
    Place place = Place::host;  ///< of input and output
};

/// The part of an image that one run of an algorithm covers: (x, y) or (x, y, z).
enum class RunPart { slice, volume };

/// One run of an algorithm on one part.
using PartRun = std::function<void(const ImageModel& input, ImageModel& output, InteractionInterface* progress)>;

/// Calls run for each part of input, with the same part of output, both in their place: copied to the device's memory
/// and back, or shown to the device. Both images have the same size.
/// @throws Interrupted after a signal: before the next part, or behind the last one.
RunReport runParts(RunPart part, const ImageModel& input, ImageModel& output, Place place, const RunOptions& options,
                   const PartRun& run);

/// An algorithm's tile has as many dimensions as the images that it takes.
inline RunPart partFor(const Property<Vector2<unsigned>>&) {
    return RunPart::slice;
}
inline RunPart partFor(const Property<Vector3<unsigned>>&) {
    return RunPart::volume;
}

/// An algorithm without tiles takes volumes.
template <typename Algorithm>
RunPart partOf(const Algorithm& algorithm) {
    if constexpr (TakesTiles<Algorithm>) {
        return partFor(algorithm.tileSize);
    } else {
        return RunPart::volume;
    }
}

/// Runs an algorithm on an image: one for 2D images on each slice, one for 3D images on each volume.
/// @param algorithm  with the properties of its own set; those of images and tiles are set here.
/// @param prepare    called before the run on each part, with the part.
/// @throws what the algorithm throws; ExceptionCancelation or Interrupted after a signal.
template <typename Algorithm>
RunReport runFilter(Algorithm& algorithm, const ImageModel& input, ImageModel& output, const RunOptions& options,
                    const std::function<void(const ImageModel& part)>& prepare) {
    const CancelOnInterrupt cancelOnInterrupt(algorithm);
    std::optional<RunPlan> plan;
    const Place place =
        choosePlace(options.placement, gainsByImagesInPlace(algorithm, input.getDataType()), {&input, &output});
    RunReport report = runParts(partOf(algorithm), input, output, place, options,
                                [&](const ImageModel& source, ImageModel& result, InteractionInterface* progress) {
                                    prepare(source);
                                    algorithm.inputImage = &source;
                                    algorithm.outputImage = &result;
                                    if (!plan) plan = settleTiles(algorithm, source, options);
                                    if (!options.isPlan) algorithm.run(progress);
                                });
    report.plan = plan.value_or(RunPlan{});
    return report;
}

}  // namespace zel::tool
