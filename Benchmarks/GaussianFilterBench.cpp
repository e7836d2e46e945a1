#include <nlohmann/json.hpp>

#include "CaseSizes.h"
#include "FilterPeers.h"
#include "GaussianFilterRun.h"
#include "PythonPeers.h"

namespace zel::bench {

namespace {

constexpr ImageSize size{256, 256, 256};
/// With it a kernel has as many coefficients as with the peers' usual four standard deviations on either side: 9 for a
/// standard deviation of 1, 25 for 3.
constexpr double kernelSizeFactor = 4;

template <typename T>
Comparison gaussianFilter(double sigma) {
    const auto image = std::make_shared<HostImage>(test::randomImage<T>(size, 1));
    const auto runOn = [&](const test::Placement3d& placement, bool voxelTypeIntermediate = false) {
        const test::GaussianParameters parameters{{sigma, sigma, sigma}, kernelSizeFactor, voxelTypeIntermediate};
        return std::make_shared<test::GaussianFilterRun>(*image, image->getDataType(), parameters, placement);
    };
    const auto onDevice = runOn({true, true}), inPlace = runOn({true, true, {}, true}), fromHost = runOn({});
    const auto kernelSize = static_cast<unsigned>(2 * kernelSizeFactor * sigma) + 1;
    Comparison result{gaussianPeers(image, sigma, kernelSize), 2 * voxelCount(size) * sizeof(T), {}, {}};
    addPythonPeers(result, "gaussian", {image}, {{"sigma", sigma}, {"kernelSize", kernelSize}});
    // Ours truncates; the peers round, one of them twice.
    result.agreement = {[fromHost, image]() -> const ImageModel& {
                            fromHost->filter.run();
                            return fromHost->hostOutput;
                        },
                        std::is_integral_v<T> ? 2 : 1e-3};
    for (const int threads : {1, 2}) {
        const std::string suffix = ", " + std::to_string(threads) + "T";
        result.ours.push_back({"device" + suffix, [onDevice] { onDevice->filter.run(); }, threads});
        if (std::is_integral_v<T>) {
            result.ours.push_back(
                {"own type" + suffix, [run = runOn({true, true}, true)] { run->filter.run(); }, threads});
        }
        result.ours.push_back({"in place" + suffix, [inPlace, image] { inPlace->filter.run(); }, threads});
        result.ours.push_back({"host images" + suffix, [fromHost, image] { fromHost->filter.run(); }, threads});
    }
    return result;
}

}  // namespace

void addGaussianFilterCases(Comparisons& comparisons) {
    for (const int sigma : {1, 3}) {
        const std::string suffix = " sigma " + std::to_string(sigma);
        comparisons.add("gaussian float" + suffix, [=] { return gaussianFilter<float>(sigma); });
        comparisons.add("gaussian u16" + suffix, [=] { return gaussianFilter<std::uint16_t>(sigma); });
    }
}

}  // namespace zel::bench
