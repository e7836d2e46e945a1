#include "Runs/FilterFiles.h"

#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/Description.h"
#include "Runs/Devices.h"
#include "System/Output.h"

namespace zel::tool {

void FilterFiles::addTo(CLI::App& app) {
    app.add_option("INPUT", input, "Image to read: " + imageFileExtensions() + "; - for standard input")
        ->required()
        ->type_name("");
    app.add_option(
           "OUTPUT", output,
           "Image to write; an existing file is replaced when the run has succeeded; - for NPY on standard output")
        ->required()
        ->type_name("");
}

HostImage FilterFiles::read(FileDetails& details) const {
    checkWritable(output);
    return readImageFile(input, details);
}

std::string whatIsDone(const CLI::App& app) {
    std::string text = "zel " + app.get_name();
    for (const CLI::Option* const option : app.get_options()) {
        const bool isOfThisCommand = option->get_group() == "Options" && !option->get_positional();
        if (!isOfThisCommand || option->count() == 0) continue;
        text += " " + option->get_name();
        if (option->get_expected_min() == 0) continue;  // a flag
        for (const std::string& value : option->results()) text += " " + value;
    }
    return text;
}

void reportLosses(const std::string& input, const std::string& output, const FileDetails& details) {
    const std::string lost = lostDetails(details, outputFormatName(output));
    if (!lost.empty()) printError("note: " + output + " does not hold what " + input + " says of " + lost);
}

void printPlan(const std::string& algorithm, const std::string& input, const RunReport& report,
               const RunOptions& options) {
    const auto& [steps, tiles, tileSize, runBytes] = report.plan;
    const std::uint64_t allSteps = steps * report.parts, bytes = runBytes + report.imageBytes;
    const std::uint64_t free = deviceMemory().free;
    const std::uint64_t tileCount = std::uint64_t{tiles.x} * tiles.y * tiles.z * report.parts;
    const ImageSize size{tileSize.x, tileSize.y, tileSize.z};
    if (options.isJson) {
        printJson({{"algorithm", algorithm},
                   {"input", input},
                   {"steps", allSteps},
                   {"tiles", tileCount},
                   {"tileSize", sizeToJson(size)},
                   {"peakBytes", bytes},
                   {"freeBytes", free}});
    } else {
        printLine(input + ": " + std::to_string(allSteps) + " steps, " + std::to_string(tileCount) +
                  (tileCount == 1 ? " tile of " : " tiles of up to ") + toText(size) + ", " + bytesToText(bytes) +
                  " of device memory at the most, " + bytesToText(free) + " are free");
    }
}

void printReport(const std::string& algorithm, const FilterFiles& files, const ImageModel& output,
                 const RunReport& report, const FileTimes& times, const RunOptions& options) {
    const ImageSize size = imageSizeOf(output);
    const std::string type(voxelTypeName(output.getDataType()));
    if (options.isJson) {
        printJson({{"algorithm", algorithm},
                   {"input", files.input},
                   {"output", files.output},
                   {"size", sizeToJson(size)},
                   {"type", type},
                   {"seconds", report.seconds},
                   {"readSeconds", times.reading},
                   {"writeSeconds", times.writing},
                   {"steps", report.steps}});
    } else if (!options.isQuiet) {
        printLine(files.output + ": " + toText(size) + ", " + type + "; read " + secondsToText(times.reading) +
                  " s, ran " + secondsToText(report.seconds) + " s, wrote " + secondsToText(times.writing) + " s");
    }
}

}  // namespace zel::tool
