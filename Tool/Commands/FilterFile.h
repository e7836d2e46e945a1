#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "Commands/SliceRun.h"
#include "ImageFiles/ImageFile.h"
#include "ImageFiles/Rows.h"

namespace zel::tool {

/// The files of an algorithm with one input and one output.
struct FilterFiles {
    std::string input;
    std::string output;

    /// The object has to outlive the parser.
    void addTo(CLI::App& app);

    /// Reads the input, after a look at whether the output can be written at all.
    HostImage read() const;
};

/// Tells what was done, in the way that the options ask for.
void printReport(const std::string& algorithm, const FilterFiles& files, const ImageModel& output,
                 const RunReport& report, const RunOptions& options);

/// Filters a file with an algorithm for 2D images; a volume slice by slice.
template <typename Algorithm, typename Configure>
void filterFile2d(const std::string& algorithm, const FilterFiles& files, const RunOptions& options,
                  const Configure& configure) {
    options.apply();
    const HostImage input = files.read();
    checkWritable(files.output, input.getDataType(), imageSizeOf(input));
    HostImage output = makeImageLike(input, input.getDataType());
    const RunReport report = runFilter2d<Algorithm>(input, output, options, configure);
    writeImageFile(files.output, output);
    printReport(algorithm, files, output, report, options);
}

}  // namespace zel::tool
