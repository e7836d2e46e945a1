#include <nppi_filtering_functions.h>

#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <span>

#include "BoxFilterRun.h"
#include "Comparison.h"
#include "FilterPeers.h"
#include "PythonPeers.h"
#include "TestImages.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::bench {

namespace {

constexpr int side = 4096;

struct Kernel {
    unsigned x;
    unsigned y;
};
constexpr Kernel kernels[] = {{3, 3}, {15, 15}, {51, 51}, {15, 3}};

template <typename T>
using FilterCall = NppStatus (*)(const T*, Npp32s, NppiSize, NppiPoint, T*, Npp32s, NppiSize, NppiSize, NppiPoint,
                                 NppiBorderType, NppStreamContext);

/// NPP's function on the images of a run that has both on the device.
template <typename T>
std::function<void()> callAlone(const std::shared_ptr<test::BoxFilterRun>& run, const Kernel& kernel,
                                FilterCall<T> filter) {
    std::size_t srcPitch = 0, dstPitch = 0;
    const auto* const src = static_cast<const T*>(cuda::deviceDataPointerConst(run->deviceInput.get(), srcPitch));
    auto* const dst = static_cast<T*>(cuda::deviceDataPointer(run->deviceOutput.get(), dstPitch));
    const NppiSize mask{static_cast<int>(kernel.x), static_cast<int>(kernel.y)};
    return [=, context = cuda::makeNppStreamContext(nullptr), images = run] {
        cuda::checkNppStatus(filter(src, static_cast<int>(srcPitch), {side, side}, {0, 0}, dst,
                                    static_cast<int>(dstPitch), {side, side}, mask, {mask.width / 2, mask.height / 2},
                                    NPP_BORDER_REPLICATE, *context));
        cuda::checkCudaStatus(cudaStreamSynchronize(context->hStream));
    };
}

template <typename T>
Comparison boxFilter(const std::shared_ptr<HostImage>& image, const Kernel& kernel, FilterCall<T> filter) {
    const auto runOn = [&](const test::Placement& placement) {
        return std::make_shared<test::BoxFilterRun>(*image, kernel.x, kernel.y, placement);
    };
    const auto onDevice = runOn({true, true}), inPlace = runOn({true, true, {}, true}), fromHost = runOn({});
    Comparison result{blurPeers(image, kernel.x, kernel.y), 2.0 * side * side * sizeof(T), {}, {}};
    addPythonPeers(result, "box", {image}, {{"x", kernel.x}, {"y", kernel.y}});
    // Means of integers are truncated, the peer's are rounded.
    result.agreement = {[fromHost, image]() -> const ImageModel& {
                            fromHost->filter.run();
                            return fromHost->hostOutput;
                        },
                        std::is_integral_v<T> ? 1 : 1e-3};
    for (const int threads : {1, 2}) {
        const std::string suffix = ", " + std::to_string(threads) + "T";
        result.ours.push_back({"device" + suffix, [onDevice] { onDevice->filter.run(); }, threads});
        result.ours.push_back({"in place" + suffix, [inPlace, image] { inPlace->filter.run(); }, threads});
        result.ours.push_back({"NPP alone" + suffix, callAlone(onDevice, kernel, filter), threads});
        result.ours.push_back({"host images" + suffix, [fromHost, image] { fromHost->filter.run(); }, threads});
    }
    return result;
}

template <typename T>
Comparison boxFilter(const Kernel& kernel, FilterCall<T> filter) {
    return boxFilter<T>(std::make_shared<HostImage>(test::randomImage<T>({side, side}, 1)), kernel, filter);
}

/// Noise whose exponents are so far apart that sums take several doubles.
Comparison boxFilterOfDecades(const Kernel& kernel, int decades) {
    const auto image = std::make_shared<HostImage>(test::randomImage<float>({side, side}, 1));
    for (float& pixel : std::span(static_cast<float*>(image->data()), std::size_t{side} * side)) {
        pixel = std::pow(
            10.0f, static_cast<float>(-decades) * std::fabs(pixel) / 500);  // of 500 are the largest ones of the noise
    }
    return boxFilter<float>(image, kernel, nppiFilterBoxBorder_32f_C1R_Ctx);
}

template <typename T>
void addType(Comparisons& comparisons, const std::string& type, FilterCall<T> filter) {
    for (const Kernel& kernel : kernels) {
        comparisons.add("box " + type + ' ' + std::to_string(kernel.x) + 'x' + std::to_string(kernel.y),
                        [=] { return boxFilter<T>(kernel, filter); });
    }
}

}  // namespace

void addBoxFilterCases(Comparisons& comparisons) {
    addType<Npp8u>(comparisons, "u8", nppiFilterBoxBorder_8u_C1R_Ctx);
    addType<Npp16u>(comparisons, "u16", nppiFilterBoxBorder_16u_C1R_Ctx);
    addType<Npp16s>(comparisons, "s16", nppiFilterBoxBorder_16s_C1R_Ctx);
    addType<Npp32f>(comparisons, "float", nppiFilterBoxBorder_32f_C1R_Ctx);
    for (const int decades : {15, 35}) {
        comparisons.add("box float of " + std::to_string(decades) + " decades 15x15", [=] {
            return boxFilterOfDecades({15, 15}, decades);
        });
    }
}

}  // namespace zel::bench
