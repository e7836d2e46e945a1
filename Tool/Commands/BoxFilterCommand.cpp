#include "Commands/Commands.h"
#include "Commands/FilterCommand.h"
#include "Runs/PropertyOption.h"
#include "zel/algorithms/CudaBoxFilter2d.h"

namespace zel::tool {

namespace {

class BoxFilterCommand final : public FilterCommand<cuda::CudaBoxFilter2d> {
public:
    std::string name() const override { return "box-filter"; }
    std::string description() const override { return "Moving average over a rectangle; volumes slice by slice"; }

    void addParameters(CLI::App& app) override {
        addPropertyOption(app,
                          {.name = "--kernel",
                           .values = "X,Y",
                           .description = "Width and height of the rectangle; one number for both",
                           .isRequired = true},
                          algorithm_.kernelSizeX, algorithm_.kernelSizeY);
        app.footer("Means of integers are truncated toward zero.");
    }
};

}  // namespace

std::unique_ptr<Command> makeBoxFilterCommand() {
    return std::make_unique<BoxFilterCommand>();
}

}  // namespace zel::tool
