#include "Commands/Commands.h"
#include "Commands/FilterCommand.h"
#include "Runs/PropertyOption.h"
#include "zel/algorithms/CudaMedianFilter2d.h"

namespace zel::tool {

namespace {

class MedianFilterCommand final : public FilterCommand<cuda::CudaMedianFilter2d> {
public:
    std::string name() const override { return "median-filter"; }
    std::string description() const override { return "Median over a square; volumes slice by slice"; }

    void addParameters(CLI::App& app) override {
        addPropertyOption(app,
                          {.name = "--radius",
                           .values = "R",
                           .description = "Distance from the square's centre to its edge: it has 2 R + 1 pixels a side",
                           .isRequired = true},
                          algorithm_.kernelRadius);
        app.footer("The image is mirrored at its edges, the edge pixel not repeated. NaN sorts after all numbers.");
    }
};

}  // namespace

std::unique_ptr<Command> makeMedianFilterCommand() {
    return std::make_unique<MedianFilterCommand>();
}

}  // namespace zel::tool
