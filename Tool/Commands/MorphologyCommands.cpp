// Erosion, dilation, opening and closing: four commands that differ only in the algorithm.

#include <utility>

#include "Commands/Commands.h"
#include "Commands/FilterCommand.h"
#include "Runs/PropertyOption.h"
#include "zel/algorithms/Morphology2d.h"

namespace zel::tool {

namespace {

template <typename Algorithm>
class MorphologyCommand final : public FilterCommand<Algorithm> {
public:
    MorphologyCommand(std::string name, std::string description)
        : name_(std::move(name)), description_(std::move(description)) {}

    std::string name() const override { return name_; }
    std::string description() const override { return description_ + "; volumes slice by slice"; }

    void addParameters(CLI::App& app) override {
        addPropertyOption(app,
                          {.name = "--radius",
                           .values = "R",
                           .description = "Distance from the neighbourhood's centre to its edge",
                           .isRequired = true},
                          this->algorithm_.kernelRadius);
        addPropertyChoice(
            app,
            {.name = "--neighborhood",
             .description = "square: 2 R + 1 pixels a side; diamond: pixels up to R steps along x and y away",
             .isRequired = true},
            this->algorithm_.neighborhood, {{"square", 1}, {"diamond", 0}});
    }

private:
    const std::string name_;
    const std::string description_;
};

}  // namespace

std::unique_ptr<Command> makeErosionCommand() {
    return std::make_unique<MorphologyCommand<cuda::CudaErosion2d>>("erosion", "Minimum over a neighbourhood");
}

std::unique_ptr<Command> makeDilationCommand() {
    return std::make_unique<MorphologyCommand<cuda::CudaDilation2d>>("dilation", "Maximum over a neighbourhood");
}

std::unique_ptr<Command> makeOpeningCommand() {
    return std::make_unique<MorphologyCommand<cuda::CudaOpening2d>>(
        "opening", "Erosion, then dilation: removes small bright details");
}

std::unique_ptr<Command> makeClosingCommand() {
    return std::make_unique<MorphologyCommand<cuda::CudaClosing2d>>(
        "closing", "Dilation, then erosion: removes small dark details");
}

}  // namespace zel::tool
