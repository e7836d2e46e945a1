#include "Commands/Commands.h"
#include "Runs/FilterFile.h"
#include "Runs/NumberOption.h"
#include "zel/algorithms/CudaBoxFilter2d.h"

namespace zel::tool {

namespace {

class BoxFilterCommand final : public Command {
public:
    std::string name() const override { return "box-filter"; }
    std::string description() const override { return "Moving average over a rectangle; volumes slice by slice"; }

    void addOptions(CLI::App& app) override {
        files_.addTo(app);
        addNumberOption(app, "--kernel", 2, "two whole numbers from 1, such as 9,9", "Rectangle in pixels",
                        [this](const Numbers& numbers) {
                            kernel_ = {numbers[0], numbers[1]};
                        })
            ->type_name("X,Y")
            ->required();
        options_.addTo(app);
        app.footer("Means of integers are truncated toward zero.");
    }

    int run() override {
        filterFile<cuda::CudaBoxFilter2d>(name(), files_, options_, [this](cuda::CudaBoxFilter2d& filter) {
            filter.kernelSizeX = kernel_.x;
            filter.kernelSizeY = kernel_.y;
        });
        return 0;
    }

private:
    FilterFiles files_;
    RunOptions options_;
    Vector2<unsigned> kernel_;
};

}  // namespace

std::unique_ptr<Command> makeBoxFilterCommand() {
    return std::make_unique<BoxFilterCommand>();
}

}  // namespace zel::tool
