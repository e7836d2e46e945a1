#pragma once

#include <nlohmann/json.hpp>

#include "Commands/Command.h"
#include "ImageFiles/Common/FileDetails.h"
#include "Runs/FilterRun.h"
#include "Runs/TimedFiles.h"
#include "zel/algorithms/CudaCrossCorrelation2d.h"

namespace zel::tool {

/// What a search for a template found.
struct Match {
    HostImage scores;
    nlohmann::ordered_json measurement;  ///< the unscaled range of the scores and the best position
    HostImage marked;                    ///< the image as uint8, with the best match outlined
    RunReport report;
};

class CrossCorrelationCommand final : public Command {
public:
    std::string name() const override { return "cross-correlation"; }
    std::string description() const override { return "Find a small picture in a larger one"; }
    void addOptions(CLI::App& app) override;
    int run() override;

    /// Adds the options that set the algorithm's own parameters.
    void addParameters(CLI::App& app);
    /// Searches an image in memory, of one slice. @throws as runFilter does.
    Match search(const HostImage& input, const HostImage& pattern, const RunOptions& options);

private:
    void writeMeasurement(const nlohmann::ordered_json& found) const;
    void printResult(const Match& match, const TimedFiles& timed) const;

    cuda::CudaCrossCorrelation2d algorithm_;
    std::string input_, template_, output_, measurementFile_, markedFile_;
    FileDetails details_;
    RunOptions options_;
};

}  // namespace zel::tool
