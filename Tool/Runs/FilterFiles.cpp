#include "Runs/FilterFiles.h"

#include <algorithm>
#include <filesystem>

#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/Description.h"
#include "Runs/Devices.h"
#include "System/Output.h"

namespace zel::tool {

void FileArguments::addTo(CLI::App& app) {
    app.add_option("INPUT", input_, "Image to read: " + imageFileExtensions() + "; - for standard input")
        ->required()
        ->type_name("");
    app.add_option("OUTPUT", others_,
                   "Image to write; an existing file is replaced when the run has succeeded; - for NPY on standard "
                   "output. Or more inputs and then a folder, where each output gets its input's name")
        ->required()
        ->type_name("");
}

std::vector<FilterFiles> FileArguments::all() const {
    std::vector<std::string> inputs{input_};
    inputs.insert(inputs.end(), others_.begin(), others_.end() - 1);
    const std::string& target = others_.back();
    const bool isFolder = std::filesystem::is_directory(target);
    if (!isFolder && (inputs.size() > 1 || target.ends_with('/'))) {
        throw CLI::ValidationError("OUTPUT is '" + target + "', but takes a folder that exists" +
                                   (inputs.size() > 1 ? ", for several inputs" : ""));
    }
    std::vector<FilterFiles> all;
    for (const std::string& input : inputs) {
        if (isFolder && input == "-") throw CLI::ValidationError("standard input has no name for a file in " + target);
        const std::filesystem::path inFolder = target / std::filesystem::path(input).filename();
        const std::string output = isFolder ? inFolder.string() : target;
        if (std::ranges::count(all, output, &FilterFiles::output) != 0) {
            throw CLI::ValidationError("two results are the same file, " + output);
        }
        all.push_back({input, output});
    }
    return all;
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

namespace {

std::string placeText(Place place) {
    switch (place) {
        case Place::inPlace:
            return "images in the host's memory, in place";
        case Place::device:
            return "images in the device's memory";
        case Place::host:
            break;
    }
    return "images in the host's memory, copied";
}

}  // namespace

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
                   {"placement", placeName(report.place)},
                   {"peakBytes", bytes},
                   {"freeBytes", free}});
    } else {
        printLine(input + ": " + std::to_string(allSteps) + " steps, " + std::to_string(tileCount) +
                  (tileCount == 1 ? " tile of " : " tiles of up to ") + toText(size) + ", " + bytesToText(bytes) +
                  " of device memory at the most, " + bytesToText(free) + " are free; " + placeText(report.place));
    }
}

void printReport(const std::string& algorithm, const FilterFiles& files, const ImageModel& output,
                 const RunReport& report, const TimedFiles& times, const RunOptions& options) {
    const ImageSize size = imageSizeOf(output);
    const std::string type(voxelTypeName(output.getDataType()));
    if (options.isJson) {
        nlohmann::ordered_json object{{"algorithm", algorithm},
                                      {"input", files.input},
                                      {"output", files.output},
                                      {"size", sizeToJson(size)},
                                      {"type", type},
                                      {"steps", report.steps},
                                      {"placement", placeName(report.place)}};
        object.update(times.toJson(report.seconds));
        printJson(object);
    } else if (!options.isQuiet) {
        printLine(files.output + ": " + toText(size) + ", " + type + "; " + times.toText(report.seconds));
    }
}

}  // namespace zel::tool
