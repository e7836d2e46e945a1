#pragma once

#include <cstddef>
#include <functional>
#include <regex>
#include <string>
#include <vector>

namespace zel::bench {

class TableReporter;

/// One of our ways to do a case's work.
struct Contender {
    std::string name;           ///< without a slash
    std::function<void()> run;  ///< returns when the work is done
    int threads = 2;            ///< of the host device
};

/// A piece of work, our ways to do it, and what they are measured against.
struct Comparison {
    std::string peerName;
    std::function<void()> peer;  ///< empty where the peer is not there
    double bytes = 0;            ///< that one of our runs reads and writes
    std::vector<Contender> ours;
};

/// The cases of the program. A case's images live only while it is measured.
class Comparisons {
public:
    /// @param name  as in the table.
    /// @param make  prepares all that the runs need; they own it.
    void add(std::string name, std::function<Comparison()> make) {
        cases_.push_back({std::move(name), std::move(make)});
    }

    /// Measures each case whose name holds a match of the filter. Repetitions of a case's contenders and its peer are
    /// interleaved, so that all see the same machine.
    /// @returns how many cases there were.
    std::size_t run(const std::regex& filter, TableReporter& reporter) const;

private:
    struct Case {
        std::string name;
        std::function<Comparison()> make;
    };
    std::vector<Case> cases_;
};

void addBoxFilterCases(Comparisons& comparisons);
void addTransferCases(Comparisons& comparisons);
void addConversionCases(Comparisons& comparisons);

}  // namespace zel::bench
