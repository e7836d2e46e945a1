#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/FilterRun.h"

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

/// Filters a file: with an algorithm for 2D images a volume slice by slice, with one for 3D images the whole of it.
/// @param configure   sets the algorithm's properties: configure(algorithm).
/// @param outputType  the input's without.
template <typename Algorithm, typename Configure>
void filterFile(const std::string& algorithm, const FilterFiles& files, const RunOptions& options,
                const Configure& configure, std::optional<VoxelTypes> outputType = {}) {
    options.apply();
    const HostImage input = files.read();
    const VoxelTypes type = outputType.value_or(input.getDataType());
    checkWritable(files.output, type, imageSizeOf(input));
    HostImage output = makeImageLike(input, type);
    const RunReport report = runFilter<Algorithm>(input, output, options, configure);
    writeImageFile(files.output, output);
    printReport(algorithm, files, output, report, options);
}

}  // namespace zel::tool
