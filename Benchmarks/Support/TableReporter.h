#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace zel::bench {

/// Begins the names of the rows that ours are measured against.
inline const std::string peerMark = "peer ";
/// Bytes that a run reads and writes.
inline constexpr char bytesCounter[] = "bytes";
/// Bytes of device memory that a run takes for itself.
inline constexpr char deviceBytesCounter[] = "device_bytes";

/// Prints a table with a line for each of our rows, beside that of its fastest peer; and all measurements as JSON.
class TableReporter final : public benchmark::BenchmarkReporter {
public:
    explicit TableReporter(std::ostream& json);

    /// The comparison that is measured next.
    void begin(const std::string& caseName);
    /// A peer of this comparison that is too slow to be measured with it.
    void tellSingleRun(const std::string& peer, double seconds);
    /// After the last comparison.
    void finish();

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    /// The repetitions of one row.
    struct Row {
        std::int64_t index = 0;  ///< in the order of the comparison
        std::string name;
        std::vector<double> milliseconds;
        double bytes = 0;
        double deviceBytes = 0;

        bool isPeer() const { return name.starts_with(peerMark); }
    };

    /// All of them, where there are several.
    void printPeers() const;
    void printRow(const Row& row, const Row* peer) const;

    benchmark::JSONReporter json_;
    bool started_ = false;
    std::string caseName_;
    std::vector<Row> rows_;
    std::string singleRuns_;
};

}  // namespace zel::bench
