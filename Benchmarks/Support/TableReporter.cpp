#include "TableReporter.h"

#include <algorithm>
#include <cstdio>

namespace zel::bench {

namespace {

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

/// How many times faster ours is, from the medians, and how far single repetitions stray from it.
std::string ratioText(const std::vector<double>& ours, const std::vector<double>& peer) {
    const std::size_t pairs = std::min(ours.size(), peer.size());
    std::vector<double> ratios(pairs);
    std::transform(peer.begin(), peer.begin() + static_cast<std::ptrdiff_t>(pairs), ours.begin(), ratios.begin(),
                   [](double other, double own) { return other / own; });
    const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
    char text[64];
    std::snprintf(text, sizeof text, "%6.2f %6.2f ..%6.2f", median(peer) / median(ours), *least, *most);
    return text;
}

constexpr char heading[] = "%-36s %-20s %9s %9s %-16s %6s %16s %7s %8s\n";
constexpr char line[] = "%-36s %-20s %9.3f %9s %-16s %23s %7.1f %8.1f\n";

}  // namespace

TableReporter::TableReporter(std::ostream& json) {
    json_.SetOutputStream(&json);
}

void TableReporter::begin(const std::string& caseName) {
    caseName_ = caseName;
    singleRuns_.clear();
}

void TableReporter::tellSingleRun(const std::string& peer, double seconds) {
    char time[64];
    std::snprintf(time, sizeof time, " %.0f (one run)", 1000 * seconds);
    singleRuns_ += (singleRuns_.empty() ? "" : ", ") + peer + time;
}

void TableReporter::finish() {
    if (started_) json_.Finalize();
}

bool TableReporter::ReportContext(const Context& context) {
    if (started_) return true;
    started_ = true;
    json_.ReportContext(context);
    if (!context.cpu_info.load_avg.empty()) {
        std::printf("load average %.2f on %d cores: figures are good when it is near 0\n",
                    context.cpu_info.load_avg.front(), context.cpu_info.num_cpus);
    }
    std::puts(
        "ours, peer (the fastest): median ms; ratio: peer / ours, spread over repetitions; MiB: device memory beside "
        "the images");
    std::printf(heading, "case", "ours by", "ours", "peer", "peer is", "ratio", "(min .. max)", "GB/s", "MiB");
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
    json_.ReportRuns(runs);
    Row row;
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration) continue;
        row.index = run.family_index;
        row.name = run.run_name.function_name.substr(caseName_.size() + 1);
        row.milliseconds.push_back(run.GetAdjustedRealTime());
        row.bytes = run.counters.at(bytesCounter).value;
        row.deviceBytes = run.counters.at(deviceBytesCounter).value;
    }
    // Their means and the like come in a call of their own.
    if (!row.name.empty()) rows_.push_back(std::move(row));
}

void TableReporter::Finalize() {
    // Interleaved rows end in any order.
    std::sort(rows_.begin(), rows_.end(), [](const Row& a, const Row& b) { return a.index < b.index; });
    const Row* peer = nullptr;
    for (const Row& row : rows_) {
        if (!row.isPeer()) continue;
        if (peer == nullptr || median(row.milliseconds) < median(peer->milliseconds)) peer = &row;
    }
    for (const Row& row : rows_) {
        if (!row.isPeer()) printRow(row, peer);
    }
    printPeers();
    std::fflush(stdout);
    rows_.clear();
}

void TableReporter::printPeers() const {
    const auto peers = std::count_if(rows_.begin(), rows_.end(), [](const Row& row) { return row.isPeer(); });
    if (peers < 2 && singleRuns_.empty()) return;
    std::string text;
    for (const Row& row : rows_) {
        if (!row.isPeer()) continue;
        char time[32];
        std::snprintf(time, sizeof time, " %.3f", median(row.milliseconds));
        text += (text.empty() ? "" : ", ") + row.name.substr(peerMark.size()) + time;
    }
    std::printf("  peers: %s%s%s\n", text.c_str(), singleRuns_.empty() ? "" : ", ", singleRuns_.c_str());
}

void TableReporter::printRow(const Row& row, const Row* peer) const {
    const double milliseconds = median(row.milliseconds);
    std::string peerText = "-", peerName, ratio;
    if (peer != nullptr) {
        char number[16];
        std::snprintf(number, sizeof number, "%.3f", median(peer->milliseconds));
        peerText = number;
        peerName = peer->name.substr(peerMark.size());
        ratio = ratioText(row.milliseconds, peer->milliseconds);
    }
    constexpr double bytesPerMebibyte = 1 << 20, bytesPerMillisecondToGigabytes = 1e-6;
    std::printf(line, caseName_.c_str(), row.name.c_str(), milliseconds, peerText.c_str(), peerName.c_str(),
                ratio.c_str(), row.bytes / milliseconds * bytesPerMillisecondToGigabytes,
                row.deviceBytes / bytesPerMebibyte);
}

}  // namespace zel::bench
