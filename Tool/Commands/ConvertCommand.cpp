#include "Commands/Commands.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "ImageFiles/VoxelRounding.h"
#include "Runs/CompressionOption.h"
#include "Runs/Description.h"
#include "Runs/FilterFiles.h"
#include "Runs/ProgressBar.h"
#include "Runs/Stopwatch.h"
#include "Runs/TimedFiles.h"
#include "Runs/VoxelTypeOption.h"
#include "System/Output.h"

namespace zel::tool {

namespace {

class ConvertCommand final : public Command {
public:
    std::string name() const override { return "convert"; }
    std::string description() const override { return "Copy an image into another file format or voxel type"; }

    void addOptions(CLI::App& app) override {
        app.add_option("INPUT", input_, "Image to read: " + imageFileExtensions() + "; - for standard input")
            ->required()
            ->type_name("");
        app.add_option("OUTPUT", output_,
                       "Image to write; the extension decides on the format; - for NPY on standard output")
            ->required()
            ->type_name("");
        addVoxelTypeOption(app,
                           {.name = "--type",
                            .values = "TYPE",
                            .description = "Voxel type of the output, such as uint8 or float32",
                            .defaultText = "the input's type"},
                           type_);
        addCompressionOption(app, details_, [this] { return std::vector{output_}; });
        app.add_flag("--quiet", isQuiet_, "Print no summary");
        app.add_flag("--json", isJson_, "Print the summary as a JSON object on standard output");
        app.footer(
            "Values are rounded to the nearest one of the type, ties to even. In integer types, values beyond the "
            "range\n"
            "become its bounds and NaN becomes 0. Complex numbers can only become complex ones.");
    }

    int run() override {
        checkWritable(output_);
        TimedFiles timed(isQuiet_);
        HostImage image = timed.read(input_, details_);
        const VoxelTypes type = type_.value_or(image.getDataType());
        checkWritable(output_, type, imageSizeOf(image));
        double seconds = 0;
        if (type != image.getDataType()) {
            const Stopwatch watch;
            image = convertVoxels(image, type, ProgressBar("converting", isQuiet_).forWork());
            seconds = watch.seconds();
        }
        details_.done = "zel convert --type " + std::string(voxelTypeName(type));
        timed.write(output_, image, details_);
        reportLosses(input_, output_, details_);
        report(image, timed, seconds);
        return 0;
    }

private:
    void report(const HostImage& image, const TimedFiles& timed, double seconds) const {
        const std::string typeName(voxelTypeName(image.getDataType()));
        const ImageSize size = imageSizeOf(image);
        if (isJson_) {
            nlohmann::ordered_json object{
                {"input", input_}, {"output", output_}, {"size", sizeToJson(size)}, {"type", typeName}};
            object.update(timed.toJson(seconds));
            printJson(object);
        } else if (!isQuiet_) {
            printLine(output_ + ": " + toText(size) + ", " + typeName + "; " + timed.toText(seconds));
        }
    }

    std::string input_;
    std::string output_;
    std::optional<VoxelTypes> type_;
    FileDetails details_;
    bool isQuiet_ = false;
    bool isJson_ = false;
};

}  // namespace

std::unique_ptr<Command> makeConvertCommand() {
    return std::make_unique<ConvertCommand>();
}

}  // namespace zel::tool
