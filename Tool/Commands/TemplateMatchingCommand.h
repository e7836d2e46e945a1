#pragma once

#include <optional>

#include "Commands/Command.h"
#include "ImageFiles/Common/FileDetails.h"
#include "Runs/FilterRun.h"
#include "Runs/TimedFiles.h"
#include "zel/algorithms/CudaTemplateMatching3d.h"

namespace zel::tool {

/// What a matching found: for each voxel the best score, and the row that gave it.
struct MatchingResult {
    HostImage score;
    HostImage index;
    RunReport report;
};

class TemplateMatchingCommand final : public Command {
public:
    std::string name() const override { return "template-matching"; }
    std::string description() const override { return "Find a template in a volume under a table of rotations"; }
    void addOptions(CLI::App& app) override;
    int run() override;

    /// Searches a volume in memory. @throws as runFilter does.
    MatchingResult search(const HostImage& input, const HostImage& pattern, VoxelTypes indexType,
                          const RunOptions& options);

private:
    VoxelTypes checkedIndexType(std::size_t rows) const;
    void print(const MatchingResult& result, std::size_t rows, const TimedFiles& timed) const;

    cuda::CudaTemplateMatching3d algorithm_;
    std::string inputPath_, templatePath_, scorePath_, indexPath_, maskPath_, filterPath_, tablePath_;
    std::optional<VoxelTypes> indexType_;
    FileDetails details_;
    RunOptions options_;
};

}  // namespace zel::tool
