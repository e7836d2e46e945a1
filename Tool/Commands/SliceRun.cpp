#include "Commands/SliceRun.h"

#include <chrono>
#include <new>
#include <optional>
#include <stdexcept>

#include "ImageFiles/Rows.h"
#include "Progress/ProgressBar.h"
#include "tarnway_cuda/CudaImageView.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/TarnwayImage.h"

namespace zel::tool {

namespace {

static_assert(static_cast<int>(VoxelTypes::complex128) == static_cast<int>(tarnway::ElementType::complex128));

TarnwayImage makeDeviceSlice(VoxelTypes type, const ImageSize& size) {
    try {
        return TarnwayImage(
            tarnway_cuda::CudaImageView::allocate(static_cast<tarnway::ElementType>(type), size.x, size.y));
    } catch (const std::bad_alloc&) {
        throw std::runtime_error("the device has not enough memory for images of " + std::to_string(size.x) + " x " +
                                 std::to_string(size.y) + "; leave them on the host and use --tile");
    }
}

/// Images in the memory of the device that stand for one slice after the other.
class DeviceSlices {
public:
    DeviceSlices(VoxelTypes inputType, VoxelTypes outputType, const ImageSize& size)
        : input_(makeDeviceSlice(inputType, size)), output_(makeDeviceSlice(outputType, size)) {}

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

/// The slice that the row begins.
template <typename Image>
ImageModelSizeProxy sliceOf(Image& image, const RowIndex& row) {
    return {&image, 0, image.getDimension(0), 0, image.getDimension(1), row.z, 1, row.i3, 1, row.i4, 1};
}

}  // namespace

RunReport runSlices(const ImageModel& input, ImageModel& output, const RunOptions& options, const SliceWork& work) {
    const ImageSize size = imageSizeOf(input);
    std::optional<DeviceSlices> device;
    if (options.placement == Placement::device) device.emplace(input.getDataType(), output.getDataType(), size);

    ProgressBar bar(options.isQuiet, size.z * size.i3 * size.i4);
    RunReport report;
    const auto timedWork = [&](const ImageModel& source, ImageModel& result) {
        const auto start = std::chrono::steady_clock::now();
        work(source, result, &bar);
        report.seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const ImageSize sliceOrigins{.x = 1, .y = 1, .z = size.z, .i3 = size.i3, .i4 = size.i4};
    forEachRow(sliceOrigins, [&](const RowIndex& index) {
        const ImageModelSizeProxy source = sliceOf(input, index);
        ImageModelSizeProxy result = sliceOf(output, index);
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
