#include <nlohmann/json.hpp>

#include "Commands/Commands.h"
#include "Commands/MarkedPicture.h"
#include "ImageFiles/Common/AtomicFile.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/Description.h"
#include "Runs/FilterRun.h"
#include "Runs/PropertyOption.h"
#include "System/Output.h"
#include "zel/algorithms/CudaCrossCorrelation2d.h"

namespace zel::tool {

namespace {

nlohmann::ordered_json measurementToJson(CrossCorrelation2dMsr& measurement) {
    return {{"minimumCorrelation", *measurement.minimumCorrelation.data()},
            {"maximumCorrelation", *measurement.maximumCorrelation.data()},
            {"bestPositionX", *measurement.bestPositionX.data()},
            {"bestPositionY", *measurement.bestPositionY.data()}};
}

class CrossCorrelationCommand final : public Command {
public:
    std::string name() const override { return "cross-correlation"; }
    std::string description() const override { return "Find a small picture in a larger one"; }

    void addOptions(CLI::App& app) override {
        app.add_option("INPUT", input_, "Image to search, one slice: " + imageFileExtensions())
            ->required()
            ->type_name("");
        app.add_option("TEMPLATE", template_, "Image to find, of the input's voxel type and no larger")
            ->required()
            ->type_name("");
        app.add_option("OUTPUT", output_, "Scores to write, float32 from -1 to 1")->required()->type_name("");
        addPropertyChoice(app,
                          {.name = "--mode",
                           .values = "MODE",
                           .description = "plain: the images as they are; mean-removed: less their means, the image's "
                                          "under the template at each pixel",
                           .defaultText = "plain"},
                          algorithm_.correlationMode, {{"plain", 0}, {"mean-removed", 1}});
        app.add_option("--measurement", measurementFile_, "JSON file for the unscaled range and the best position")
            ->type_name("FILE");
        app.add_option("--mark", markedFile_, "Picture of the input (uint8) with the best match outlined")
            ->type_name("FILE");
        options_.addTo(app);
        app.footer("The score at a pixel is that of the template centred there; of an even size, left of the middle.");
    }

    int run() override {
        options_.apply();
        for (const std::string& file : {output_, markedFile_})
            if (!file.empty()) checkWritable(file);
        if (!measurementFile_.empty()) AtomicFile::checkWritable(measurementFile_);
        const HostImage input = readImageFile(input_), pattern = readImageFile(template_);
        const ImageSize size = imageSizeOf(input);
        if (size.z * size.i3 * size.i4 != 1)
            throw FileError(input_ + " has several slices; cross-correlation takes one");
        checkWritable(output_, VoxelTypes::float32, size);
        if (!markedFile_.empty()) checkWritable(markedFile_, VoxelTypes::uint8, size);

        HostImage scores = makeImageLike(input, VoxelTypes::float32);
        CrossCorrelation2dMsr measurement;
        algorithm_.inputTemplate = &pattern;
        algorithm_.outputMeasurement = &measurement;
        const RunReport report = runFilter(algorithm_, input, scores, options_, [](const ImageModel&) {});
        const nlohmann::ordered_json found = measurementToJson(measurement);
        writeImageFile(output_, scores);
        if (!measurementFile_.empty()) writeMeasurement(found);
        if (!markedFile_.empty()) {
            const std::size_t width = pattern.getDimension(0), height = pattern.getDimension(1);
            writeImageFile(markedFile_,
                           markedPicture(input, {*measurement.bestPositionX.data(), (width - 1) / 2, width},
                                         {*measurement.bestPositionY.data(), (height - 1) / 2, height}));
        }
        printResult(found, size, report);
        return 0;
    }

private:
    void writeMeasurement(const nlohmann::ordered_json& found) const {
        const std::string text = found.dump(2) + "\n";
        AtomicFile file(measurementFile_);
        file.write(text.data(), text.size());
        file.commit();
    }

    void printResult(const nlohmann::ordered_json& found, const ImageSize& size, const RunReport& report) const {
        if (options_.isJson) {
            nlohmann::ordered_json object{
                {"algorithm", name()},      {"input", input_},   {"template", template_},     {"output", output_},
                {"size", sizeToJson(size)}, {"type", "float32"}, {"seconds", report.seconds}, {"steps", report.steps}};
            object.update(found);
            printJson(object);
        } else if (!options_.isQuiet) {
            printLine(output_ + ": " + toText(size) + ", float32, " + secondsToText(report.seconds) + " s");
            for (const auto& [key, value] : found.items()) printLine(key + ": " + value.dump());
        }
    }

    cuda::CudaCrossCorrelation2d algorithm_;
    std::string input_, template_, output_, measurementFile_, markedFile_;
    RunOptions options_;
};

}  // namespace

std::unique_ptr<Command> makeCrossCorrelationCommand() {
    return std::make_unique<CrossCorrelationCommand>();
}

}  // namespace zel::tool
