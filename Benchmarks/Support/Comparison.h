#pragma once

#include <chrono>
#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "zel/HostImage.h"

namespace zel::bench {

class TableReporter;

/// Does a case's work once, and tells the seconds that it took.
class Work {
public:
    /// @param run  returns when the work is done. What it returns are the seconds, if that is a number: those of
    ///             another process, for example. Else they are those of the call.
    template <typename Run>
    requires(!std::same_as<Run, Work>) Work(Run run) : run_(clocked(std::move(run))) {}

    double operator()() const { return run_(); }

private:
    template <typename Run>
    static std::function<double()> clocked(Run run) {
        if constexpr (std::same_as<decltype(run()), double>) return run;
        return [run = std::move(run)] {
            const auto start = std::chrono::steady_clock::now();
            run();
            return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        };
    }

    std::function<double()> run_;
};

/// One of our ways to do a case's work.
struct Contender {
    std::string name;  ///< without a slash
    Work run;
    int threads = 2;  ///< of the host device
};

/// Somebody else's way to do it.
struct Peer {
    std::string name;
    Work run;
    std::function<std::shared_ptr<const HostImage>()> result;  ///< of the last run; empty when it cannot be compared
};

/// That the peers did the same work as we.
struct Agreement {
    std::function<const ImageModel&()> result;  ///< of one of our runs; empty when there is nothing to compare
    double tolerance = 0;                       ///< by which a voxel of a peer's may differ
};

/// A piece of work, our ways to do it, and what they are measured against.
struct Comparison {
    std::vector<Peer> peers;      ///< the fastest one counts; empty where there is none
    double bytes = 0;             ///< that one of our runs reads and writes
    std::vector<Contender> ours;  ///< none where the remark is all
    Agreement agreement = {};
    std::function<std::string()> remark = {};  ///< a line for the table, measured last; may be empty
    bool onceARepetition = false;              ///< each run is slow to prepare
};

/// The cases of the program. A case's images live only while it is measured.
class Comparisons {
public:
    /// @param name  as in the table.
    /// @param make  prepares all that the runs need; they own it.
    void add(std::string name, std::function<Comparison()> make) {
        cases_.push_back({std::move(name), std::move(make)});
    }

    /// Measures each case whose name holds a match of the filter. Repetitions of a case's contenders and its peers are
    /// interleaved, so that all see the same machine. Of peers that are far from being the fastest and slow, one run
    /// has to do.
    /// @returns how many cases there were.
    /// @throws std::runtime_error when a peer's result is another than ours.
    std::size_t run(const std::regex& filter, TableReporter& reporter) const;

private:
    struct Case {
        std::string name;
        std::function<Comparison()> make;
    };
    std::vector<Case> cases_;
};

void addFirstRunCases(Comparisons& comparisons);
void addBoxFilterCases(Comparisons& comparisons);
void addMedianFilterCases(Comparisons& comparisons);
void addMorphologyCases(Comparisons& comparisons);
void addGaussianFilterCases(Comparisons& comparisons);
void addCrossCorrelationCases(Comparisons& comparisons);
void addCorrelationAccuracyCases(Comparisons& comparisons);
void addTemplateMatchingCases(Comparisons& comparisons);
void addNonLocalMeansCases(Comparisons& comparisons);
void addConvolutionCases(Comparisons& comparisons);
void addReductionCases(Comparisons& comparisons);
void addTransferCases(Comparisons& comparisons);
void addConversionCases(Comparisons& comparisons);

}  // namespace zel::bench
