#include <cstdio>
#include <nlohmann/json.hpp>
#include <numeric>

#include "CaseSizes.h"
#include "CrossCorrelationRun.h"
#include "FftwCorrelation.h"
#include "FilterPeers.h"
#include "ImageFiltering/FftUtilities_CUDA.h"
#include "PythonPeers.h"
#include "StageClock.h"

namespace zel::bench {

namespace {

using Run = test::CrossCorrelationRun;

struct Stage {
    const char* name;
    bool isTransform;
};

/// What the steps of a run on the device end, the first being announced before any.
std::vector<Stage> stagesOf(bool removesMeans) {
    std::vector<Stage> stages{{"start", false}, {"placing", false}};
    if (removesMeans) stages.insert(stages.end(), {{"local means", false}, {"template's mean", false}});
    stages.insert(stages.end(), {{"image forward", true},
                                 {"template forward", true},
                                 {"product", false},
                                 {"inverse", true},
                                 {"reductions and rescaling", false}});
    return stages;
}

/// The stages of the fastest of some runs, and the share of what is no transform.
std::string stagesText(Run& run, bool removesMeans) {
    const std::vector<Stage> stages = stagesOf(removesMeans);
    std::vector<double> best;
    double bestTotal = 0;
    for (int repetition = 0; repetition < 9; ++repetition) {
        StageClock clock;
        run.filter.run(&clock);
        const std::vector<double> times = clock.milliseconds();
        const double total = std::accumulate(times.begin(), times.end(), 0.0);
        if (!best.empty() && total >= bestTotal) continue;
        best = times;
        bestTotal = total;
    }
    std::string text = "  stages, ms:";
    double outside = 0;
    for (std::size_t i = 0; i < stages.size(); ++i) {
        char part[64];
        std::snprintf(part, sizeof part, "%s %s %.2f", i == 0 ? "" : ",", stages[i].name, best.at(i));
        text += part;
        if (!stages[i].isTransform) outside += best[i];
    }
    if (removesMeans) return text;  // local means have transforms of their own
    char share[64];
    std::snprintf(share, sizeof share, "; outside the transforms %.0f %%", 100 * outside / bestTotal);
    return text + share;
}

template <typename T>
Comparison crossCorrelation(std::size_t size, std::size_t templateSize, bool removesMeans) {
    const auto image = std::make_shared<HostImage>(test::randomImage<T>({size, size}, 1));
    const auto part = test::partOf(*image, {size / 3, size / 4}, {templateSize, templateSize});
    const auto pattern = std::make_shared<HostImage>(image->getDataType(), ImageSize{templateSize, templateSize});
    test::copyRows(part, *pattern);
    const auto runOn = [&](bool device) {
        return std::make_shared<Run>(*image, *pattern, removesMeans ? 1 : 0, test::Placement{device, device, {}});
    };
    const auto onDevice = runOn(true), fromHost = runOn(false);

    Comparison result{matchTemplatePeers(image, pattern, removesMeans), 0, {}, {}};
    const auto padded = static_cast<int>(cuda::nextFastFftSize(size + templateSize - 1));
    if (std::is_same_v<T, float> && !removesMeans) {
        for (const int threads : {1, 2})
            result.peers.push_back(fftwCorrelation(image, pattern, padded, padded, threads));
    }
    addPythonPeers(result, "correlation", {image, pattern}, {{"removesMean", removesMeans}});
    result.bytes = (sizeof(T) + sizeof(float)) * static_cast<double>(size) * static_cast<double>(size);
    for (const int threads : {1, 2}) {
        const std::string suffix = ", " + std::to_string(threads) + "T";
        result.ours.push_back({"device" + suffix, [onDevice] { onDevice->filter.run(); }, threads});
        result.ours.push_back({"host images" + suffix, [fromHost, image] { fromHost->filter.run(); }, threads});
    }
    result.remark = [=] { return stagesText(*onDevice, removesMeans); };
    return result;
}

template <typename T>
void addCases(Comparisons& comparisons, const std::string& type, std::size_t size,
              const std::vector<std::size_t>& templateSizes) {
    for (const bool removesMeans : {false, true}) {
        for (const std::size_t templateSize : templateSizes) {
            const std::string name = std::string("correlation ") + (removesMeans ? "means off " : "plain ") + type +
                                     ' ' + std::to_string(size) + " template " + std::to_string(templateSize);
            comparisons.add(name, [=] { return crossCorrelation<T>(size, templateSize, removesMeans); });
        }
    }
}

}  // namespace

void addCrossCorrelationCases(Comparisons& comparisons) {
    for (const std::size_t size : {512, 1024, 2048, 4096}) {
        addCases<float>(
            comparisons, "float", size,
            size == 512 ? std::vector<std::size_t>{15, 65, 129} : std::vector<std::size_t>{15, 65, 129, 511});
        addCases<std::uint8_t>(comparisons, "u8", size, {129});
    }
}

}  // namespace zel::bench
