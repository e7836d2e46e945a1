#include "Commands/Commands.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "ImageFiles/VoxelRounding.h"
#include "Runs/Description.h"
#include "Runs/VoxelTypeOption.h"
#include "System/Output.h"

namespace zel::tool {

namespace {

class ConvertCommand final : public Command {
public:
    std::string name() const override { return "convert"; }
    std::string description() const override { return "Copy an image into another file format or voxel type"; }

    void addOptions(CLI::App& app) override {
        app.add_option("INPUT", input_, "Image to read: " + imageFileExtensions())->required()->type_name("");
        app.add_option("OUTPUT", output_, "Image to write; its extension decides on the format")
            ->required()
            ->type_name("");
        addVoxelTypeOption(app, "--type", "Voxel type of the output, such as uint8 or float32; the input's without",
                           type_);
        app.add_flag("--quiet", isQuiet_, "No summary");
        app.add_flag("--json", isJson_, "Tell what was done as an object of JSON on standard output");
        app.footer(
            "Values go to the nearest one that the type has, ties to the even one. Values beyond the range of an\n"
            "integer type go to its bounds, NaN becomes 0 in them. Complex numbers stay complex.");
    }

    int run() override {
        checkWritable(output_);
        HostImage image = readImageFile(input_);
        const VoxelTypes type = type_.value_or(image.getDataType());
        checkWritable(output_, type, imageSizeOf(image));
        if (type != image.getDataType()) image = convertVoxels(image, type);
        writeImageFile(output_, image);
        report(image);
        return 0;
    }

private:
    void report(const HostImage& image) const {
        const std::string typeName(voxelTypeName(image.getDataType()));
        const ImageSize size = imageSizeOf(image);
        if (isJson_) {
            printJson({{"input", input_}, {"output", output_}, {"size", sizeToJson(size)}, {"type", typeName}});
        } else if (!isQuiet_) {
            printLine(output_ + ": " + toText(size) + ", " + typeName);
        }
    }

    std::string input_;
    std::string output_;
    std::optional<VoxelTypes> type_;
    bool isQuiet_ = false;
    bool isJson_ = false;
};

}  // namespace

std::unique_ptr<Command> makeConvertCommand() {
    return std::make_unique<ConvertCommand>();
}

}  // namespace zel::tool
