#include "Runs/FilterRun.h"

#include <chrono>
#include <new>
#include <optional>
#include <stdexcept>

#include "ImageFiles/Common/Rows.h"
#include "Runs/Description.h"
#include "Runs/ProgressBar.h"
#include "tarnway_cuda/CudaImageView.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/TarnwayImage.h"

namespace zel::tool {

namespace {

static_assert(static_cast<int>(VoxelTypes::complex128) == static_cast<int>(tarnway::ElementType::complex128));

TarnwayImage makeDeviceImage(VoxelTypes type, const ImageSize& size) {
    try {
        return TarnwayImage(
            tarnway_cuda::CudaImageView::allocate(static_cast<tarnway::ElementType>(type), size.x, size.y, size.z));
    } catch (const std::bad_alloc&) {
        throw std::runtime_error("the device has not enough memory for images of " + toText(size) +
                                 "; leave them on the host and use --tile");
    }
}

/// Images in the memory of the device that stand for one part after the other.
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

/// The part of so many slices that the row begins.
template <typename Image>
ImageModelSizeProxy partOf(Image& image, const RowIndex& row, std::size_t depth) {
    return {&image, 0, image.getDimension(0), 0, image.getDimension(1), row.z, depth, row.i3, 1, row.i4, 1};
}

}  // namespace

RunReport runParts(RunPart part, const ImageModel& input, ImageModel& output, const RunOptions& options,
                   const PartWork& work) {
    const ImageSize size = imageSizeOf(input);
    const bool inSlices = part == RunPart::slice;
    const std::size_t depth = inSlices ? 1 : size.z;
    std::optional<DeviceParts> device;
    if (options.placement == Placement::device) {
        device.emplace(input.getDataType(), output.getDataType(), ImageSize{size.x, size.y, depth});
    }

    const ImageSize partOrigins{.x = 1, .y = 1, .z = inSlices ? size.z : 1, .i3 = size.i3, .i4 = size.i4};
    ProgressBar bar(options.isQuiet, partOrigins.z * size.i3 * size.i4);
    RunReport report;
    const auto timedWork = [&](const ImageModel& source, ImageModel& result) {
        const auto start = std::chrono::steady_clock::now();
        work(source, result, &bar);
        report.seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    forEachRow(partOrigins, [&](const RowIndex& index) {
        const ImageModelSizeProxy source = partOf(input, index, depth);
        ImageModelSizeProxy result = partOf(output, index, depth);
        if (device) {
            device->run(source, result, timedWork);
        } else {
            timedWork(source, result);
        }
        bar.finishRun();
    });
    report.steps = bar.steps();
    return report;
}

}  // namespace zel::tool
