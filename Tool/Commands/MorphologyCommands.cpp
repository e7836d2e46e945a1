// Erosion, dilation, opening and closing: four commands that differ in nothing but the algorithm.

#include <utility>

#include "Commands/Commands.h"
#include "Runs/FilterFile.h"
#include "Runs/NumberOption.h"
#include "zel/algorithms/Morphology2d.h"

namespace zel::tool {

namespace {

/// The algorithm's value for a neighbourhood.
int parseNeighborhood(const std::string& text) {
    if (text == "square") return 1;
    if (text == "diamond") return 0;
    throw CLI::ValidationError("--neighborhood is '" + text + "', but takes square or diamond");
}

template <typename Algorithm>
class MorphologyCommand final : public Command {
public:
    MorphologyCommand(std::string name, std::string description)
        : name_(std::move(name)), description_(std::move(description)) {}

    std::string name() const override { return name_; }
    std::string description() const override { return description_ + "; volumes slice by slice"; }

    void addOptions(CLI::App& app) override {
        files_.addTo(app);
        addNumberOption(app, "--radius", 1, "a whole number from 1",
                        "Pixels from the neighbourhood's centre to its edge",
                        [this](const Numbers& numbers) { radius_ = numbers[0]; })
            ->type_name("R")
            ->required();
        app.add_option_function<std::string>(
               "--neighborhood", [this](const std::string& text) { neighborhood_ = parseNeighborhood(text); },
               "square of 2 R + 1 pixels a side, or diamond: pixels at most R steps along x and y away")
            ->type_name("SHAPE")
            ->required();
        options_.addTo(app);
    }

    int run() override {
        filterFile<Algorithm>(name(), files_, options_, [this](Algorithm& filter) {
            filter.kernelRadius = radius_;
            filter.neighborhood = neighborhood_;
        });
        return 0;
    }

private:
    const std::string name_;
    const std::string description_;
    FilterFiles files_;
    RunOptions options_;
    unsigned radius_ = 0;
    int neighborhood_ = 0;
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
        "opening", "Erosion, then dilation: takes away what is bright and small");
}

std::unique_ptr<Command> makeClosingCommand() {
    return std::make_unique<MorphologyCommand<cuda::CudaClosing2d>>(
        "closing", "Dilation, then erosion: takes away what is dark and small");
}

}  // namespace zel::tool
