#include "Commands/CrossCorrelationCommand.h"

#include "Commands/Commands.h"
#include "Commands/MarkedPicture.h"
#include "ImageFiles/Common/AtomicFile.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/CompressionOption.h"
#include "Runs/Description.h"
#include "Runs/FilterFiles.h"
#include "Runs/PropertyOption.h"
#include "System/Output.h"

namespace zel::tool {

namespace {

nlohmann::ordered_json measurementToJson(CrossCorrelation2dMsr& measurement) {
    return {{"minimumCorrelation", *measurement.minimumCorrelation.data()},
            {"maximumCorrelation", *measurement.maximumCorrelation.data()},
            {"bestPositionX", *measurement.bestPositionX.data()},
            {"bestPositionY", *measurement.bestPositionY.data()}};
}

}  // namespace

void CrossCorrelationCommand::addOptions(CLI::App& app) {
    app.add_option("INPUT", input_, "Image to search, one slice: " + imageFileExtensions() + "; - for standard input")
        ->required()
        ->type_name("");
    app.add_option("TEMPLATE", template_, "Image to find, of the input's voxel type and no larger")
        ->required()
        ->type_name("");
    app.add_option("OUTPUT", output_, "Scores to write, float32 from -1 to 1; - for NPY on standard output")
        ->required()
        ->type_name("");
    addParameters(app);
    app.add_option("--measurement", measurementFile_, "JSON file for the unscaled range and the best position")
        ->type_name("FILE");
    app.add_option("--mark", markedFile_, "Picture of the input (uint8) with the best match outlined")
        ->type_name("FILE");
    addCompressionOption(app, details_, [this] { return std::vector{output_, markedFile_}; });
    options_.addTo(app);
    options_.addPlanOption(app);
    app.footer("The score at a pixel is that of the template centred there; of an even size, left of the middle.");
}

void CrossCorrelationCommand::addParameters(CLI::App& app) {
    addPropertyChoice(app,
                      {.name = "--mode",
                       .description = "plain: the images as they are; mean-removed: less their means, the image's "
                                      "under the template at each pixel",
                       .defaultText = "plain"},
                      algorithm_.correlationMode, {{"plain", 0}, {"mean-removed", 1}});
}

int CrossCorrelationCommand::run() {
    options_.apply();
    for (const std::string& file : {output_, markedFile_})
        if (!file.empty()) checkWritable(file);
    if (!measurementFile_.empty()) AtomicFile::checkWritable(measurementFile_);
    for (const std::string& other : {measurementFile_, markedFile_})
        if (other == output_) throw CLI::ValidationError("two results are the same file, " + output_);
    TimedFiles timed(options_.isQuiet);
    const HostImage input = timed.read(input_, details_), pattern = timed.read(template_);
    const ImageSize size = imageSizeOf(input);
    if (size.z * size.i3 * size.i4 != 1) throw FileError(input_ + " has several slices; cross-correlation takes one");
    checkWritable(output_, VoxelTypes::float32, size);
    if (!markedFile_.empty()) checkWritable(markedFile_, VoxelTypes::uint8, size);

    const Match match = search(input, pattern, options_);
    if (options_.isPlan) {
        printPlan(name(), input_, match.report, options_);
        return 0;
    }
    details_.done = "zel " + name();
    timed.write(output_, match.scores, details_);
    if (!measurementFile_.empty()) writeMeasurement(match.measurement);
    if (!markedFile_.empty()) timed.write(markedFile_, match.marked, details_);
    reportLosses(input_, output_, details_);
    printResult(match, timed);
    return 0;
}

Match CrossCorrelationCommand::search(const HostImage& input, const HostImage& pattern, const RunOptions& options) {
    HostImage scores = makeImageLike(input, VoxelTypes::float32);
    CrossCorrelation2dMsr measurement;
    algorithm_.inputTemplate = &pattern;
    algorithm_.outputMeasurement = &measurement;
    const RunReport report = runFilter(algorithm_, input, scores, options, [](const ImageModel&) {});
    if (options.isPlan) return {std::move(scores), {}, HostImage(VoxelTypes::uint8, {1, 1}), report};
    const std::size_t width = pattern.getDimension(0), height = pattern.getDimension(1);
    return {std::move(scores), measurementToJson(measurement),
            markedPicture(input, {*measurement.bestPositionX.data(), (width - 1) / 2, width},
                          {*measurement.bestPositionY.data(), (height - 1) / 2, height}),
            report};
}

void CrossCorrelationCommand::writeMeasurement(const nlohmann::ordered_json& found) const {
    const std::string text = found.dump(2) + "\n";
    AtomicFile file(measurementFile_);
    file.write(text.data(), text.size());
    file.commit();
}

void CrossCorrelationCommand::printResult(const Match& match, const TimedFiles& timed) const {
    const ImageSize size = imageSizeOf(match.scores);
    if (options_.isJson) {
        nlohmann::ordered_json object{{"algorithm", name()},         {"input", input_},
                                      {"template", template_},       {"output", output_},
                                      {"size", sizeToJson(size)},    {"type", "float32"},
                                      {"steps", match.report.steps}, {"placement", placeName(match.report.place)}};
        object.update(timed.toJson(match.report.seconds));
        object.update(match.measurement);
        printJson(object);
    } else if (!options_.isQuiet) {
        printLine(output_ + ": " + toText(size) + ", float32; " + timed.toText(match.report.seconds));
        for (const auto& [key, value] : match.measurement.items()) printLine(key + ": " + value.dump());
    }
}

std::unique_ptr<Command> makeCrossCorrelationCommand() {
    return std::make_unique<CrossCorrelationCommand>();
}

}  // namespace zel::tool
