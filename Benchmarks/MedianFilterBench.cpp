#include <nlohmann/json.hpp>

#include "MedianFilterRun.h"
#include "MedianPeers.h"
#include "PythonPeers.h"
#include "TestImages.h"

namespace zel::bench {

namespace {

constexpr int side = 2048;

using MedianRun = std::shared_ptr<test::MedianFilterRun>;

MedianRun runOn(const std::shared_ptr<HostImage>& image, unsigned radius, const test::Placement& placement) {
    return std::make_shared<test::MedianFilterRun>(*image, radius, placement);
}

template <typename T>
Comparison medianFilter(unsigned radius) {
    const auto image = std::make_shared<HostImage>(test::randomImage<T>({side, side}, 1));
    Comparison result{openCvMedianPeers(image, radius), 2.0 * side * side * sizeof(T), {}, {}};
    for (const Peer& peer : cimgMedianPeers(image, radius)) result.peers.push_back(peer);
    addPythonPeers(result, "median", {image}, {{"radius", radius}});
    const MedianRun onDevice = runOn(image, radius, {true, true}),
                    inPlace = runOn(image, radius, {true, true, {}, true}), fromHost = runOn(image, radius, {});
    result.agreement.result = [fromHost, image]() -> const ImageModel& {
        fromHost->filter.run();
        return fromHost->hostOutput;
    };
    for (const int threads : {1, 2}) {
        const std::string suffix = ", " + std::to_string(threads) + "T";
        result.ours.push_back({"device" + suffix, [onDevice] { onDevice->filter.run(); }, threads});
        result.ours.push_back({"in place" + suffix, [inPlace, image] { inPlace->filter.run(); }, threads});
        result.ours.push_back({"host images" + suffix, [fromHost, image] { fromHost->filter.run(); }, threads});
    }
    return result;
}

/// For the plot of the cost against the radius, see filter_cost.py.
template <typename T>
Comparison medianCost(unsigned radius) {
    const auto image = std::make_shared<HostImage>(test::randomImage<T>({side, side}, 1));
    Comparison result;
    result.bytes = 2.0 * side * side * sizeof(T);
    result.ours.push_back({"device, 2T", [run = runOn(image, radius, {true, true})] { run->filter.run(); }, 2});
    return result;
}

template <typename T>
void addType(Comparisons& comparisons, const std::string& type) {
    for (const unsigned radius : {1U, 2U, 3U, 7U, 15U, 30U})
        comparisons.add("median " + type + " radius " + std::to_string(radius),
                        [=] { return medianFilter<T>(radius); });
    for (const unsigned radius :
         {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U, 12U, 14U, 16U, 18U, 20U, 25U, 30U, 35U, 40U, 45U, 50U})
        comparisons.add("cost of median " + type + ' ' + std::to_string(radius), [=] { return medianCost<T>(radius); });
}

}  // namespace

void addMedianFilterCases(Comparisons& comparisons) {
    addType<std::uint8_t>(comparisons, "u8");
    addType<std::uint16_t>(comparisons, "u16");
    addType<float>(comparisons, "float");
}

}  // namespace zel::bench
