#include "Runs/FilterRun.h"

#include <optional>

#include "ImageFiles/Common/Rows.h"
#include "Runs/Devices.h"
#include "Runs/ProgressBar.h"
#include "Runs/Stopwatch.h"
#include "System/Interrupt.h"
#include "zel/ImageModelSizeProxy.h"

namespace zel::tool {

namespace {

/// Images in the memory of the device, used for one part after the other.
class DeviceParts {
public:
    DeviceParts(VoxelTypes inputType, VoxelTypes outputType, const ImageSize& size)
        : input_(makeDeviceImage(inputType, size)), output_(makeDeviceImage(outputType, size)) {}

    void run(const ImageModel& input, ImageModel& output,
             const std::function<void(const ImageModel&, ImageModel&)>& work) {
        copyVoxels(input, input_);
        work(input_, output_);
        copyVoxels(output_, output);
    }

private:
    TarnwayImage input_;
    TarnwayImage output_;
};

/// The part of that number: `depth` slices, counted through all volumes.
template <typename Image>
ImageModelSizeProxy partOf(Image& image, std::size_t depth, std::size_t part) {
    const std::size_t partsPerVolume = image.getDimension(2) / depth;
    const std::size_t volume = part / partsPerVolume;
    const std::size_t z = part % partsPerVolume * depth;
    const std::size_t i3 = volume % image.getDimension(3), i4 = volume / image.getDimension(3);
    return {&image, 0, image.getDimension(0), 0, image.getDimension(1), z, depth, i3, 1, i4, 1};
}

}  // namespace

RunReport runParts(RunPart part, const ImageModel& input, ImageModel& output, Place place, const RunOptions& options,
                   const PartRun& run) {
    const ImageSize size = imageSizeOf(input);
    const std::size_t depth = part == RunPart::slice ? 1 : size.z;
    const std::size_t partCount = size.z / depth * size.i3 * size.i4;
    std::optional<DeviceParts> device;
    RunReport report;
    report.place = place;
    if (place == Place::device) {
        const ImageSize partSize{size.x, size.y, depth};
        device.emplace(input.getDataType(), output.getDataType(), partSize);
        for (const VoxelTypes type : {input.getDataType(), output.getDataType()})
            report.imageBytes += imageBytes(type, partSize).value_or(0);
    }

    ProgressBar bar("running", options.isQuiet || options.isPlan, partCount);
    const auto timedRun = [&](const ImageModel& source, ImageModel& result) {
        const Stopwatch watch;
        run(source, result, &bar);
        report.seconds += watch.seconds();
    };
    for (std::size_t number = 0; number < (options.isPlan ? 1 : partCount); ++number) {
        checkInterrupt();
        const ImageModelSizeProxy source = partOf(input, depth, number);
        ImageModelSizeProxy result = partOf(output, depth, number);
        if (device) {
            device->run(source, result, timedRun);
        } else if (place == Place::inPlace) {
            TarnwayImage shownResult(viewInPlace(result));
            timedRun(TarnwayImage(viewInPlace(source)), shownResult);
        } else {
            timedRun(source, result);
        }
        bar.finishRun();
    }
    checkInterrupt();
    report.steps = bar.steps();
    report.parts = partCount;
    return report;
}

}  // namespace zel::tool
