#include <algorithm>
#include <optional>

#include "Commands/Commands.h"
#include "Commands/FilterCommand.h"
#include "ImageFiles/Common/NumberText.h"
#include "Runs/PropertyOption.h"
#include "Runs/VoxelTypeOption.h"
#include "zel/algorithms/CudaGaussianFilter3d.h"

namespace zel::tool {

namespace {

class GaussianFilterCommand final : public FilterCommand<cuda::CudaGaussianFilter3d> {
public:
    std::string name() const override { return "gaussian-filter"; }
    std::string description() const override { return "Gaussian smoothing of a volume along all three axes"; }

    void addParameters(CLI::App& app) override {
        addPropertyOption(
            app,
            {.name = "--sigma",
             .values = "X,Y,Z",
             .description = "Standard deviation along each axis, or one for all; 0 leaves the axis unchanged",
             .isRequired = true},
            algorithm_.standardDeviation);
        app.add_flag("--physical", isPhysical_, "Take --sigma in the unit of the input's voxel size, not in voxels");
        addPropertyOption(app,
                          {.name = "--kernel-size-factor",
                           .values = "F",
                           .description = "Half the kernel's size in standard deviations"},
                          algorithm_.kernelSizeFactor);
        addPropertyFlag(app, "--voxel-type-intermediate",
                        "Keep the output's type between the axes: takes less memory, but truncates integers there too",
                        algorithm_.voxelTypeIntermediate);
        addVoxelTypeOption(app,
                           {.name = "--output-type",
                            .values = "TYPE",
                            .description = "Voxel type of the output: the input's or float32",
                            .defaultText = "the input's type"},
                           outputType_);
        app.footer("Results in integer types are truncated toward zero.");
    }

protected:
    void checkOptions() const override {
        if (outputType_ && isComplex(*outputType_)) refuseOutputType("a type of real numbers");
        const double factor = algorithm_.kernelSizeFactor;
        const auto& [x, y, z] = algorithm_.standardDeviation.get();
        const auto allowed = static_cast<double>(cuda::CudaGaussianFilter3d::maxTapCount) / (2 * factor);
        const double largest = std::max({x, y, z});
        if (largest <= allowed || isPhysical_) return;
        throw wrongValue("--sigma", numberToText(largest),
                         "at most " + numberToText(allowed) + " with --kernel-size-factor " + numberToText(factor));
    }

    void takeInput(const ImageModel& input) override {
        const VoxelTypes type = input.getDataType(), output = outputType_.value_or(type);
        if (output != type && output != VoxelTypes::float32) {
            refuseOutputType(std::string(voxelTypeName(type)) + ", the input's type, or float32");
        }
        if (!isPhysical_) return;
        if (!physicalSigma_) physicalSigma_ = algorithm_.standardDeviation.get();
        const auto [x, y, z] = *physicalSigma_;
        algorithm_.standardDeviation = {x / input.getSpacing(0), y / input.getSpacing(1), z / input.getSpacing(2)};
    }

private:
    [[noreturn]] void refuseOutputType(const std::string& allowed) const {
        throw wrongValue("--output-type", std::string(voxelTypeName(*outputType_)), allowed);
    }

    bool isPhysical_ = false;
    std::optional<Vector3<double>> physicalSigma_;  ///< as it was given: the property has it in voxels of each input
};

}  // namespace

std::unique_ptr<Command> makeGaussianFilterCommand() {
    return std::make_unique<GaussianFilterCommand>();
}

}  // namespace zel::tool
