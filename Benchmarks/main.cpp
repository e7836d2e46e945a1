// Measures the library beside its peers, and prints a table.

#include <benchmark/benchmark.h>

#include <fstream>
#include <iostream>

#include "Comparison.h"
#include "TableReporter.h"

int main(int argc, char** argv) {
    using namespace zel::bench;
    benchmark::Initialize(&argc, argv);
    std::ofstream json;
    if (argc == 2) json.open(argv[1]);
    if (argc > 2 || !json) {
        std::cerr << "usage: bench [option of Google Benchmark]... [JSON file to write]\n"
                     "--benchmark_filter picks cases, not rows\n";
        return 1;
    }
    Comparisons comparisons;
    addBoxFilterCases(comparisons);
    addTransferCases(comparisons);
    addConversionCases(comparisons);
    TableReporter reporter(json);
    comparisons.run(std::regex(benchmark::GetBenchmarkFilter()), reporter);
    reporter.finish();
}
