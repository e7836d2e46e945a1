#include <cstdlib>
#include <stdexcept>

#include "Commands/Commands.h"
#include "Commands/FilterCommand.h"
#include "Runs/NumberOption.h"
#include "Runs/PropertyOption.h"
#include "Runs/VoxelTypeOption.h"
#include "zel/Exceptions.h"
#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

namespace zel::tool {

namespace {

using Algorithm = cuda::CudaAdaptiveManifoldNlmFilter;

class NonLocalMeansCommand final : public FilterCommand<Algorithm> {
public:
    std::string name() const override { return "non-local-means"; }
    std::string description() const override {
        return "Denoising: each voxel becomes a mean of those whose surroundings look alike";
    }

    void addParameters(CLI::App& app) override {
        addPropertyOption(app,
                          {.name = "--spatial-sigma",
                           .values = "S",
                           .description = "How far apart voxels may lie that are averaged, as a standard deviation"},
                          algorithm_.spatialSigma);
        addPropertyOption(app,
                          {.name = "--range-sigma",
                           .values = "R",
                           .description = "How much the surroundings may differ, as a standard deviation and a part of "
                                          "the image's range: more noise needs more"},
                          algorithm_.rangeSigma);
        addPropertyOption(app,
                          {.name = "--patch-radius",
                           .values = "P",
                           .description = "The surroundings have 2 P + 1 voxels a side; at least 1"},
                          algorithm_.patchRadius);
        addPropertyOption(app,
                          {.name = "--halo-radius",
                           .values = "H",
                           .description = "Margin of the blocks that an image too large for the device is cut into"},
                          algorithm_.haloRadius);
        addNumberOption(app,
                        {.name = "--seed",
                         .values = "N",
                         .description = "Seed of the random sample; the same seed gives the same bits",
                         .defaultText = std::to_string(seed_)},
                        NumberFormat<unsigned>{}, [this](const std::vector<unsigned>& numbers) { seed_ = numbers[0]; });
        addVoxelTypeOption(app,
                           {.name = "--output-type",
                            .values = "TYPE",
                            .description = "Voxel type of the output",
                            .defaultText = "the input's type"},
                           outputType_);
        app.footer("Results in integer types are truncated toward zero.");
    }

    RunReport filter(const ImageModel& input, ImageModel& output, const RunOptions& options) override try {
        return FilterCommand::filter(input, output, options);
    } catch (const UnexpectedError& error) {
        const std::string message = error.what();
        throw std::runtime_error(message + (message.starts_with("Eigenvectors")
                                                ? " An image whose voxels are all equal has none"
                                                : " --halo-radius leaves nothing of the blocks that fit the device"));
    }

private:
    void checkOptions() const override {
        if (algorithm_.patchRadius == 0U) throw wrongValue("--patch-radius", "0", "a whole number from 1 to 17");
        if (algorithm_.treeHeight() <= Algorithm::maxTreeHeight) return;
        throw wrongValue("--spatial-sigma", numberToText(algorithm_.spatialSigma.get()),
                         "less: with --range-sigma " + numberToText(algorithm_.rangeSigma.get()) +
                             " the tree of manifolds has " + numberToText(algorithm_.treeHeight()) +
                             " levels, and at most " + numberToText(Algorithm::maxTreeHeight) + " are allowed");
    }

    void prepare(const ImageModel&) override { std::srand(seed_); }

    unsigned seed_ = 1;
};

}  // namespace

std::unique_ptr<Command> makeNonLocalMeansCommand() {
    return std::make_unique<NonLocalMeansCommand>();
}

}  // namespace zel::tool
