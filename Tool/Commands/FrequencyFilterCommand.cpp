#include <stdexcept>

#include "Commands/Commands.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Matching/FrequencyFilter.h"
#include "Runs/CompressionOption.h"
#include "Runs/Description.h"
#include "Runs/NumberOption.h"
#include "System/Output.h"
#include "Tables/TableFile.h"
#include "zel/TemplateTransformation.h"

namespace zel::tool {

namespace {

class FrequencyFilterCommand final : public Command {
public:
    std::string name() const override { return "frequency-filter"; }
    std::string description() const override { return "Make a frequency filter for template-matching"; }

    void addOptions(CLI::App& app) override {
        app.add_option("TEMPLATE", templatePath_, "The template; its size and voxel size are used")
            ->required()
            ->type_name("");
        app.add_option("OUTPUT", output_, "Filter to write, float32, zero frequency at the centre")
            ->required()
            ->type_name("");
        app.add_option("--table", tablePath_,
                       "The table of the matching's rows; the filter is made large enough for every row")
            ->type_name("ROWS.csv");
        addBand(app, "--low-pass", "Half of the amplitude passes at this frequency, more below", bands_.lowPass);
        addBand(app, "--high-pass", "Half of the amplitude passes at this frequency, more above", bands_.highPass);
        addNumberOption(
            app,
            {.name = "--missing-wedge",
             .values = "DEGREES",
             .description = "Keep the frequencies that a tilt series about y covers, up to this tilt to either side"},
            NumberFormat<double>{1, 1, {0, 89.9, true, "degrees"}},
            [this](const Numbers& numbers) { bands_.maxTilt = numbers[0]; });
        addNumberOption(app,
                        {.name = "--spacing",
                         .values = "X,Y,Z",
                         .description = "Voxel size of the searched image",
                         .defaultText = "the template's"},
                        NumberFormat<double>{3, 3, {0, 1e9, true, ""}, "1,1,1"}, [this](const Numbers& numbers) {
                            spacing_ = {numbers[0], numbers[1], numbers[2]};
                        });
        addCompressionOption(app, details_, [this] { return std::vector{output_}; });
        app.add_flag("--quiet", isQuiet_, "Print no summary");
        app.add_flag("--json", isJson_, "Print the summary as a JSON object on standard output");
        app.footer(
            "Several filters multiply. Frequencies are cycles per unit of length, per voxel where its size is 1.");
    }

    int run() override {
        if (!bands_.lowPass && !bands_.highPass && !bands_.maxTilt) {
            throw CLI::ValidationError("give --low-pass, --high-pass or --missing-wedge");
        }
        const auto box = requiredBox();
        const ImageSize size{box[0] + 1, box[1], box[2]};
        checkWritable(output_, VoxelTypes::float32, size);
        HostImage filter = makeFrequencyFilter(box, spacing_, bands_);
        writeImageFile(output_, filter, details_);
        if (isJson_) {
            printJson({{"output", output_}, {"size", sizeToJson(size)}});
        } else if (!isQuiet_) {
            printLine(output_ + ": " + toText(size) + ", float32");
        }
        return 0;
    }

private:
    using Numbers = std::vector<double>;

    static void addBand(CLI::App& app, const char* name, const char* description, std::optional<double>& band) {
        addNumberOption(app, {.name = name, .values = "F", .description = description},
                        NumberFormat<double>{1, 1, {0, 1e9, true, "cycles per unit of length"}},
                        [&band](const Numbers& numbers) { band = numbers[0]; });
    }

    /// The largest box of the template under any row, in voxels of the searched image.
    std::array<std::size_t, 3> requiredBox() {
        const HostImage image = readImageFile(templatePath_);
        const std::array<double, 3> spacing = {image.getSpacing(0), image.getSpacing(1), image.getSpacing(2)};
        if (spacing_[0] == 0) spacing_ = spacing;
        std::optional<tarnway::DataFrameView> table;
        if (!tablePath_.empty()) requireTransformations(tablePath_, table.emplace(readTableFile(tablePath_)));
        std::array<std::size_t, 3> smallest{};
        std::array<std::size_t, 3> largest{};
        computeMinimalMaximalBoxSize(table ? &*table : nullptr,
                                     {image.getDimension(0), image.getDimension(1), image.getDimension(2)}, spacing,
                                     spacing_, smallest, largest);
        return largest;
    }

    std::string templatePath_;
    std::string output_;
    std::string tablePath_;
    FrequencyBands bands_;
    std::array<double, 3> spacing_{};  // 0 until it is known
    FileDetails details_;
    bool isQuiet_ = false;
    bool isJson_ = false;
};

}  // namespace

std::unique_ptr<Command> makeFrequencyFilterCommand() {
    return std::make_unique<FrequencyFilterCommand>();
}

}  // namespace zel::tool
