#include "Commands/Commands.h"
#include "Runs/FilterFile.h"
#include "Runs/NumberOption.h"
#include "Runs/VoxelTypeOption.h"
#include "zel/algorithms/CudaGaussianFilter3d.h"

namespace zel::tool {

namespace {

class GaussianFilterCommand final : public Command {
public:
    std::string name() const override { return "gaussian-filter"; }
    std::string description() const override { return "Gaussian smoothing of a volume along all three axes"; }

    void addOptions(CLI::App& app) override {
        files_.addTo(app);
        addNumberOption<double>(app, "--sigma", 3, "three numbers, such as 1.5,1.5,0",
                                "Standard deviation along each axis in voxels; 0 leaves an axis alone",
                                [this](const RealNumbers& numbers) {
                                    sigma_ = {numbers[0], numbers[1], numbers[2]};
                                })
            ->type_name("X,Y,Z")
            ->required();
        addNumberOption<double>(app, "--kernel-size-factor", 1, "a number above 0, such as 4",
                                "Half the kernel's size in standard deviations (default 3)",
                                [this](const RealNumbers& numbers) { kernelSizeFactor_ = numbers[0]; })
            ->type_name("F");
        app.add_flag("--voxel-type-intermediate", isVoxelTypeIntermediate_,
                     "Truncate integers between the axes too; takes less memory");
        addVoxelTypeOption(app, "--output-type", "Voxel type of the output: float32, or the input's (default)",
                           outputType_);
        options_.addTo(app);
        app.footer("Results in integer types are truncated toward zero.");
    }

    int run() override {
        const auto configure = [this](cuda::CudaGaussianFilter3d& filter) {
            filter.standardDeviation = sigma_;
            if (kernelSizeFactor_) filter.kernelSizeFactor = *kernelSizeFactor_;
            filter.voxelTypeIntermediate = isVoxelTypeIntermediate_;
        };
        filterFile<cuda::CudaGaussianFilter3d>(name(), files_, options_, configure, outputType_);
        return 0;
    }

private:
    FilterFiles files_;
    RunOptions options_;
    Vector3<double> sigma_;
    std::optional<double> kernelSizeFactor_;
    bool isVoxelTypeIntermediate_ = false;
    std::optional<VoxelTypes> outputType_;
};

}  // namespace

std::unique_ptr<Command> makeGaussianFilterCommand() {
    return std::make_unique<GaussianFilterCommand>();
}

}  // namespace zel::tool
