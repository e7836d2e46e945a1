#include "Comparison.h"

#include <benchmark/benchmark.h>
#include <host_device.h>
#include <tbb/global_control.h>

#include <algorithm>
#include <cstdio>

#include "PeerCheck.h"
#include "TableReporter.h"

namespace zel::bench {

namespace {

/// Beyond what lies on the device before: the images of a run on the device are not counted.
void measure(benchmark::State& state, const Contender& contender, double bytes) {
    const tbb::global_control threads(tbb::global_control::max_allowed_parallelism,
                                      static_cast<std::size_t>(contender.threads));
    contender.run();  // what only a first run has to do is not measured
    host::resetPeakBytes();
    const std::uint64_t bytesBefore = host::deviceUse().liveBytes;
    for ([[maybe_unused]] const auto iteration : state) state.SetIterationTime(contender.run());
    state.counters[deviceBytesCounter] = static_cast<double>(host::deviceUse().peakBytes - bytesBefore);
    state.counters[bytesCounter] = bytes;
}

void enlist(const std::string& caseName, const Contender& contender, const Comparison& comparison) {
    auto* const enlisted = benchmark::RegisterBenchmark((caseName + '/' + contender.name).c_str(),
                                                        [=, bytes = comparison.bytes](benchmark::State& state) {
                                                            measure(state, contender, bytes);
                                                        })
                               ->UseManualTime()
                               ->MeasureProcessCPUTime()
                               ->Unit(benchmark::kMillisecond);
    if (comparison.onceARepetition) enlisted->Iterations(1);
}

/// Whether a peer need not run again for the table: it is slow, and another one is much faster.
bool isOutOfTheRace(double seconds, const std::vector<double>& secondsOfAll) {
    constexpr double slow = 0.3, farBehind = 3;
    return seconds > slow && seconds > farBehind * *std::min_element(secondsOfAll.begin(), secondsOfAll.end());
}

}  // namespace

std::size_t Comparisons::run(const std::regex& filter, TableReporter& reporter) const {
    std::size_t measured = 0;
    for (const auto& [name, make] : cases_) {
        if (!std::regex_search(name, filter)) continue;
        const Comparison comparison = make();
        const std::vector<double> firstSeconds = runPeersOnce(name, comparison);
        if (!comparison.ours.empty()) {
            reporter.begin(name);
            for (const Contender& contender : comparison.ours) enlist(name, contender, comparison);
            for (std::size_t i = 0; i < firstSeconds.size(); ++i) {
                const Peer& peer = comparison.peers[i];
                if (isOutOfTheRace(firstSeconds[i], firstSeconds)) {
                    reporter.tellSingleRun(peer.name, firstSeconds[i]);
                } else {
                    enlist(name, {peerMark + peer.name, peer.run}, comparison);
                }
            }
            benchmark::RunSpecifiedBenchmarks(&reporter, ".");
            benchmark::ClearRegisteredBenchmarks();
        }
        if (comparison.remark) std::puts(comparison.remark().c_str());
        ++measured;
    }
    return measured;
}

}  // namespace zel::bench
