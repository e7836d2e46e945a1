#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "ImageFiles/Common/FileDetails.h"
#include "Runs/FilterRun.h"

namespace zel::tool {

/// The files of an algorithm with one input and one output.
struct FilterFiles {
    std::string input;
    std::string output;

    /// The object has to outlive the parser.
    void addTo(CLI::App& app);

    /// Reads the input, after a check that the output's name can be written.
    /// @param details  gets what the input's file says besides the image.
    HostImage read(FileDetails& details) const;
};

/// Prints what was done, in the form that the options ask for.
void printReport(const std::string& algorithm, const FilterFiles& files, const ImageModel& output,
                 const RunReport& report, const RunOptions& options);

}  // namespace zel::tool
