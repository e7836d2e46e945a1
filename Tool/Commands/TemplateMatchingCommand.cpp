#include "Commands/TemplateMatchingCommand.h"

#include <stdexcept>

#include "Commands/Commands.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "ImageFiles/VoxelRounding.h"
#include "Matching/PlacedImages.h"
#include "Runs/CancelOnInterrupt.h"
#include "Runs/CompressionOption.h"
#include "Runs/Description.h"
#include "Runs/FilterFiles.h"
#include "Runs/FilterRun.h"
#include "Runs/ProgressBar.h"
#include "Runs/PropertyOption.h"
#include "Runs/Stopwatch.h"
#include "Runs/VoxelTypeOption.h"
#include "System/Output.h"
#include "Tables/TableFile.h"

namespace zel::tool {

namespace {

/// The smallest type that holds the numbers of so many rows.
VoxelTypes indexTypeFor(std::size_t rows) {
    if (rows <= 256) return VoxelTypes::uint8;
    return rows <= 65536 ? VoxelTypes::uint16 : VoxelTypes::uint32;
}

/// An image that takes the other's voxel size where its file cannot hold one.
HostImage readAsPartner(TimedFiles& timed, const std::string& path, const ImageModel& other) {
    FileDetails details;
    HostImage image = timed.read(path, details);
    if (details.format == "NPY" || details.format == "PNG") {
        for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, other.getSpacing(axis));
    }
    return image;
}

}  // namespace

void TemplateMatchingCommand::addOptions(CLI::App& app) {
    app.add_option("INPUT", inputPath_, "Volume to search: " + imageFileExtensions() + "; - for standard input")
        ->required()
        ->type_name("");
    app.add_option("TEMPLATE", templatePath_, "What to search for; brought to the input's voxel type")
        ->required()
        ->type_name("");
    app.add_option("SCORE", scorePath_, "Best score of each voxel, -1 to 1, float32; - for NPY on standard output")
        ->required()
        ->type_name("");
    app.add_option("INDEX", indexPath_, "Number of the row that gave it, from 0 on")->required()->type_name("");
    app.add_option("--mask", maskPath_, "Weights of the template's voxels, of its size; those above 0 count")
        ->type_name("FILE");
    addPropertyFlag(app, "--mask-follows-transformation", "Turn the mask with the template",
                    algorithm_.maskFollowsTransformation);
    app.add_option("--frequency-filter", filterPath_, "Filter for every template, as zel frequency-filter makes it")
        ->type_name("FILE");
    app.add_option("--table", tablePath_, "Rows of phi, theta, psi (radians), scaleX, scaleY, scaleZ")
        ->type_name("ROWS.csv");
    addVoxelTypeOption(app,
                       {.name = "--index-type",
                        .values = "TYPE",
                        .description = "Voxel type of INDEX: uint8, uint16 or uint32",
                        .defaultText = "the smallest that the rows fit in"},
                       indexType_);
    addCompressionOption(app, details_, [this] { return std::vector{scorePath_, indexPath_}; });
    options_.addTo(app);
    options_.addPlanOption(app);
    app.footer(
        "Without a mask the whole template counts. A template file without a voxel size (NPY, PNG) is given the "
        "input's.");
}

int TemplateMatchingCommand::run() {
    checkedIndexType(1);  // what no number of rows allows, before the files are read
    options_.apply();
    checkWritable(scorePath_);
    checkWritable(indexPath_);
    if (scorePath_ == indexPath_) throw CLI::ValidationError("SCORE and INDEX are the same file, " + scorePath_);
    TimedFiles timed(options_.isQuiet);
    const HostImage input = timed.read(inputPath_, details_);
    HostImage templateImage = readAsPartner(timed, templatePath_, input);
    if (templateImage.getDataType() != input.getDataType()) {
        templateImage = convertVoxels(templateImage, input.getDataType());
    }
    std::optional<HostImage> mask;
    std::optional<HostImage> filter;
    if (!maskPath_.empty()) algorithm_.inputMask = &mask.emplace(readAsPartner(timed, maskPath_, templateImage));
    if (!filterPath_.empty()) algorithm_.frequencyFilter = &filter.emplace(timed.read(filterPath_));
    std::size_t rows = 1;
    if (!tablePath_.empty()) {
        const auto table = std::make_shared<const tarnway::DataFrameView>(readTableFile(tablePath_));
        rows = table->shape()[1];
        algorithm_.transformationTable = table;
    }
    const VoxelTypes indexType = checkedIndexType(rows);
    checkWritable(scorePath_, VoxelTypes::float32, imageSizeOf(input));
    checkWritable(indexPath_, indexType, imageSizeOf(input));
    const MatchingResult result = search(input, templateImage, indexType, options_);
    if (options_.isPlan) {
        printPlan(name(), inputPath_, result.report, options_);
        return 0;
    }
    details_.done = "zel " + name();
    timed.write(scorePath_, result.score, details_);
    timed.write(indexPath_, result.index, details_);
    reportLosses(inputPath_, scorePath_, details_);
    print(result, rows, timed);
    return 0;
}

VoxelTypes TemplateMatchingCommand::checkedIndexType(std::size_t rows) const {
    const VoxelTypes fitting = indexTypeFor(rows);
    if (!indexType_) return fitting;
    const std::string name(voxelTypeName(*indexType_));
    if (*indexType_ != VoxelTypes::uint8 && *indexType_ != VoxelTypes::uint16 && *indexType_ != VoxelTypes::uint32) {
        throw wrongValue("--index-type", name, "uint8, uint16 or uint32");
    }
    if (*indexType_ >= fitting) return *indexType_;
    throw wrongValue("--index-type", name,
                     std::string(voxelTypeName(fitting)) + " or more: there are " + std::to_string(rows) + " rows");
}

MatchingResult TemplateMatchingCommand::search(const HostImage& input, const HostImage& pattern, VoxelTypes indexType,
                                               const RunOptions& options) {
    MatchingResult result{makeImageLike(input, VoxelTypes::float32), makeImageLike(input, indexType), {}};
    algorithm_.inputTemplate = &pattern;
    const Place place = choosePlace(options.placement, gainsByImagesInPlace(algorithm_, input.getDataType()),
                                    {&input, &result.score, &result.index});
    const PlacedImages placed(place, input, result.score, result.index);
    result.report.place = place;
    algorithm_.inputImage = &placed.input();
    algorithm_.outputScoreImage = &placed.score();
    algorithm_.outputIndexImage = &placed.index();
    result.report.plan = settleTiles(algorithm_, input, options);
    result.report.imageBytes = placed.deviceBytes();
    if (options.isPlan) return result;
    const CancelOnInterrupt cancelOnInterrupt(algorithm_);
    ProgressBar bar("running", options.isQuiet);
    const Stopwatch watch;
    algorithm_.run(&bar);
    result.report.seconds = watch.seconds();
    bar.finishRun();
    result.report.steps = bar.steps();
    placed.copyResults(result.score, result.index);
    return result;
}

void TemplateMatchingCommand::print(const MatchingResult& result, std::size_t rows, const TimedFiles& timed) const {
    const ImageSize size = imageSizeOf(result.score);
    if (options_.isJson) {
        nlohmann::ordered_json object{
            {"algorithm", name()}, {"input", inputPath_},          {"template", templatePath_},
            {"score", scorePath_}, {"index", indexPath_},          {"size", sizeToJson(size)},
            {"rows", rows},        {"steps", result.report.steps}, {"placement", placeName(result.report.place)}};
        object.update(timed.toJson(result.report.seconds));
        printJson(object);
    } else if (!options_.isQuiet) {
        printLine(scorePath_ + ", " + indexPath_ + ": " + toText(size) + ", " + std::to_string(rows) +
                  (rows == 1 ? " row; " : " rows; ") + timed.toText(result.report.seconds));
    }
}

std::unique_ptr<Command> makeTemplateMatchingCommand() {
    return std::make_unique<TemplateMatchingCommand>();
}

}  // namespace zel::tool
