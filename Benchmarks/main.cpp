// Measures the library beside its peers, and prints a table.

#include <benchmark/benchmark.h>

#include <exception>
#include <fstream>
#include <iostream>
#include <string_view>

#include "Comparison.h"
#include "FirstRun.h"
#include "TableReporter.h"

namespace {

using namespace zel::bench;

/// @param json  gets all measurements, if it is open.
int measureCases(const std::string& filter, std::ostream& json) {
    Comparisons comparisons;
    addFirstRunCases(comparisons);
    addBoxFilterCases(comparisons);
    addMedianFilterCases(comparisons);
    addMorphologyCases(comparisons);
    addGaussianFilterCases(comparisons);
    addCrossCorrelationCases(comparisons);
    addCorrelationAccuracyCases(comparisons);
    addTemplateMatchingCases(comparisons);
    addNonLocalMeansCases(comparisons);
    addConvolutionCases(comparisons);
    addReductionCases(comparisons);
    addTransferCases(comparisons);
    addConversionCases(comparisons);
    TableReporter reporter(json);
    if (comparisons.run(std::regex(filter), reporter) == 0) {
        std::cerr << "bench: no case is called '" << filter << "'\n";
        return 1;
    }
    reporter.finish();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == firstRunCommand) return printFirstRun(argv[2]);
    benchmark::Initialize(&argc, argv);
    std::ofstream json;
    if (argc == 2) json.open(argv[1]);
    if (argc > 2 || !json) {
        std::cerr << "usage: bench [option of Google Benchmark]... [JSON file to write]\n"
                     "--benchmark_filter picks cases, not rows\n";
        return 1;
    }
    try {
        return measureCases(benchmark::GetBenchmarkFilter(), json);
    } catch (const std::exception& error) {
        std::cerr << "bench: " << error.what() << '\n';
        return 1;
    }
}
