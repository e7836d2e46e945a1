#include <cstdio>
#include <nlohmann/json.hpp>

#include "BoxFilterRun.h"
#include "ChildProcess.h"
#include "FilterPeers.h"
#include "FirstRun.h"
#include "PythonPeers.h"
#include "TestImages.h"

namespace zel::bench {

namespace {

constexpr std::size_t side = 512;
constexpr unsigned kernel = 15;
constexpr char ours[] = "in place, 2T";

using Image = std::shared_ptr<HostImage>;

Image randomImage() {
    return std::make_shared<HostImage>(test::randomImage<std::uint8_t>({side, side}, 1));
}

Work boxFilter(const Image& image) {
    const auto run =
        std::make_shared<test::BoxFilterRun>(*image, kernel, kernel, test::Placement{true, true, {}, true});
    return [run, image] { run->filter.run(); };
}

Comparison comparisonOf(Work run, Peers peers) {
    return {std::move(peers), 2.0 * side * side, {{ours, std::move(run)}}};
}

/// In a process of its own, which has made the images before.
Work firstRunOf(const std::string& contender) {
    return [=] {
        ChildProcess fresh({"/proc/self/exe", firstRunCommand, contender});
        return std::stod(fresh.receiveLine());
    };
}

const nlohmann::json parameters{{"x", kernel}, {"y", kernel}};

Comparison firstRuns() {
    const Image image = randomImage();
    Comparison result = comparisonOf(firstRunOf(ours), blurPeers(image, kernel, kernel));
    for (Peer& peer : result.peers) peer = {peer.name, firstRunOf(peer.name), {}};
    addFirstRunOfPythonPeer(result, "box", {image}, parameters);
    result.onceARepetition = true;
    return result;
}

Comparison laterRuns() {
    const Image image = randomImage();
    Comparison result = comparisonOf(boxFilter(image), blurPeers(image, kernel, kernel));
    addPythonPeers(result, "box", {image}, parameters);
    return result;
}

}  // namespace

int printFirstRun(const std::string& contender) {
    const Image image = randomImage();
    const Work run = contender == ours ? boxFilter(image) : blurPeers(image, kernel, kernel).at(0).run;
    std::printf("%.9f\n", run());
    return 0;
}

void addFirstRunCases(Comparisons& comparisons) {
    const std::string name = "box u8 " + std::to_string(side) + 'x' + std::to_string(side);
    comparisons.add("first run, " + name, firstRuns);
    comparisons.add("later runs, " + name, laterRuns);
}

}  // namespace zel::bench
