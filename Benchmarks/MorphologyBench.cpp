#include <nlohmann/json.hpp>

#include "FilterPeers.h"
#include "ImageFiltering/MorphologyPasses_CUDA.h"
#include "MorphologyRun.h"
#include "PythonPeers.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"

namespace zel::bench {

namespace {

constexpr int side = 4096;

/// The element and what is done with it.
struct Element {
    MorphologyOperation operation;
    unsigned radius;
    bool square;
};

/// NPP's functions on the images of a run that has both on the device.
/// @param inPasses  by the element of radius 1, else one call for each operation.
template <typename T, typename Algo>
std::function<void()> callsAlone(const std::shared_ptr<test::MorphologyRun<Algo>>& run, const Element& element,
                                 bool inPasses) {
    std::size_t srcPitch = 0, dstPitch = 0;
    const auto* const src = static_cast<const T*>(cuda::deviceDataPointerConst(run->deviceInput.get(), srcPitch));
    auto* const dst = static_cast<T*>(cuda::deviceDataPointer(run->deviceOutput.get(), dstPitch));
    const auto between = std::make_shared<cuda::DeviceImage<T>>(side, side, true);
    const auto operation = [=, context = cuda::makeNppStreamContext(nullptr), images = run](
                               const T* from, std::size_t fromPitch, T* work, std::size_t workPitch, T* to,
                               std::size_t toPitch, bool dilate) {
        cuda::morphologyPasses(from, fromPitch, inPasses ? work : nullptr, workPitch, to, toPitch, {side, side},
                               static_cast<int>(element.radius), element.square, *context, dilate);
    };
    if (element.operation == MorphologyOperation::erosion) {
        return [=] { operation(src, srcPitch, between->data(), between->pitch(), dst, dstPitch, false); };
    }
    return [=] {
        operation(src, srcPitch, dst, dstPitch, between->data(), between->pitch(), false);
        operation(between->data(), between->pitch(), between->data(), between->pitch(), dst, dstPitch, true);
    };
}

template <typename Algo, typename T>
Comparison morphology(const Element& element) {
    const auto image = std::make_shared<HostImage>(test::randomImage<T>({side, side}, 1));
    const auto runOn = [&](const test::Placement& placement) {
        return std::make_shared<test::MorphologyRun<Algo>>(*image, element.radius, element.square, placement);
    };
    const auto onDevice = runOn({true, true}), inPlace = runOn({true, true, {}, true}), fromHost = runOn({});
    Comparison result{morphologyPeers(image, element.operation, element.radius, element.square),
                      2.0 * side * side * sizeof(T),
                      {},
                      {}};
    addPythonPeers(result, "morphology", {image},
                   {{"operation", element.operation == MorphologyOperation::erosion ? "erosion" : "opening"},
                    {"radius", element.radius},
                    {"square", element.square}});
    result.agreement.result = [fromHost, image]() -> const ImageModel& {
        fromHost->filter.run();
        return fromHost->hostOutput;
    };
    const bool hasPasses = element.radius > 1;
    for (const int threads : {1, 2}) {
        const std::string suffix = ", " + std::to_string(threads) + "T";
        result.ours.push_back({"device" + suffix, [onDevice] { onDevice->filter.run(); }, threads});
        if (hasPasses) {
            result.ours.push_back({"NPP passes" + suffix, callsAlone<T>(onDevice, element, true), threads});
        }
        result.ours.push_back({"NPP one call" + suffix, callsAlone<T>(onDevice, element, false), threads});
        result.ours.push_back({"in place" + suffix, [inPlace, image] { inPlace->filter.run(); }, threads});
        result.ours.push_back({"host images" + suffix, [fromHost, image] { fromHost->filter.run(); }, threads});
    }
    return result;
}

/// Erosion on the device alone, for the plot of cost against radius.
template <typename T>
Comparison erosionCost(unsigned radius, bool square) {
    HostImage image = test::randomImage<T>({side, side}, 1);
    const auto run =
        std::make_shared<test::MorphologyRun<cuda::CudaErosion2d>>(image, radius, square, test::Placement{true, true});
    Comparison result{{}, 2.0 * side * side * sizeof(T), {}, {}};
    result.ours.push_back({"device, 2T", [run] { run->filter.run(); }, 2});
    return result;
}

template <typename T>
void addType(Comparisons& comparisons, const std::string& type) {
    for (const bool square : {true, false}) {
        const std::string shape = square ? " square " : " diamond ";
        for (const unsigned radius :
             {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U, 12U, 14U, 16U, 18U, 20U, 25U, 30U, 35U, 40U, 45U, 50U}) {
            comparisons.add("cost of erosion " + type + shape + std::to_string(radius),
                            [=] { return erosionCost<T>(radius, square); });
        }
        for (const unsigned radius : {1U, 7U, 25U}) {
            comparisons.add("erosion " + type + shape + std::to_string(radius), [=] {
                return morphology<cuda::CudaErosion2d, T>({MorphologyOperation::erosion, radius, square});
            });
        }
        // An odd radius: the second operation then works in place of its source.
        comparisons.add("opening " + type + shape + "7", [=] {
            return morphology<cuda::CudaOpening2d, T>({MorphologyOperation::opening, 7, square});
        });
    }
}

}  // namespace

void addMorphologyCases(Comparisons& comparisons) {
    addType<std::uint8_t>(comparisons, "u8");
    addType<float>(comparisons, "float");
}

}  // namespace zel::bench
