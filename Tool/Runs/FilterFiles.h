#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "ImageFiles/Common/FileDetails.h"
#include "Runs/FilterRun.h"
#include "Runs/TimedFiles.h"

namespace zel::tool {

/// The files of an algorithm with one input and one output.
struct FilterFiles {
    std::string input;
    std::string output;
};

/// The files that a command is given: an input and an output, or several inputs and a folder.
class FileArguments {
public:
    /// The object has to outlive the parser.
    void addTo(CLI::App& app);

    /// Pairs of input and output, for one run each. @throws CLI::ValidationError when the arguments do not fit together
    std::vector<FilterFiles> all() const;

private:
    std::string input_;
    std::vector<std::string> others_;  ///< the output, or more inputs and the folder
};

/// The command line without files and without the options of all algorithms: "zel box-filter --kernel 9,9".
std::string whatIsDone(const CLI::App& app);

/// Says on standard error, in one line, what the input's file tells and the output's cannot hold.
void reportLosses(const std::string& input, const std::string& output, const FileDetails& details);

/// Prints what would be done with `input`, in the form that the options ask for.
void printPlan(const std::string& algorithm, const std::string& input, const RunReport& report,
               const RunOptions& options);

/// Prints what was done, in the form that the options ask for.
void printReport(const std::string& algorithm, const FilterFiles& files, const ImageModel& output,
                 const RunReport& report, const TimedFiles& times, const RunOptions& options);

}  // namespace zel::tool
