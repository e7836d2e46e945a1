#include "Comparison.h"

#include <benchmark/benchmark.h>
#include <host_device.h>
#include <tbb/global_control.h>

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
    for ([[maybe_unused]] const auto iteration : state) contender.run();
    state.counters[deviceBytesCounter] = static_cast<double>(host::deviceUse().peakBytes - bytesBefore);
    state.counters[bytesCounter] = bytes;
}

void enlist(const std::string& caseName, const Contender& contender, double bytes) {
    benchmark::RegisterBenchmark((caseName + '/' + contender.name).c_str(),
                                 [=](benchmark::State& state) { measure(state, contender, bytes); })
        ->UseRealTime()
        ->MeasureProcessCPUTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

std::size_t Comparisons::run(const std::regex& filter, TableReporter& reporter) const {
    std::size_t measured = 0;
    for (const auto& [name, make] : cases_) {
        if (!std::regex_search(name, filter)) continue;
        const Comparison comparison = make();
        checkPeers(name, comparison);
        for (const Contender& contender : comparison.ours) enlist(name, contender, comparison.bytes);
        for (const Peer& peer : comparison.peers) enlist(name, {peerMark + peer.name, peer.run}, comparison.bytes);
        if (!comparison.ours.empty()) {
            reporter.begin(name);
            benchmark::RunSpecifiedBenchmarks(&reporter, ".");
            benchmark::ClearRegisteredBenchmarks();
        }
        if (comparison.remark) std::puts(comparison.remark().c_str());
        ++measured;
    }
    return measured;
}

}  // namespace zel::bench
