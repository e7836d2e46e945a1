#include "Runs/FilterFiles.h"

#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/Description.h"
#include "System/Output.h"

namespace zel::tool {

void FilterFiles::addTo(CLI::App& app) {
    app.add_option("INPUT", input, "Image to read: " + imageFileExtensions())->required()->type_name("");
    app.add_option("OUTPUT", output, "Image to write; an existing file is replaced when the run has succeeded")
        ->required()
        ->type_name("");
}

HostImage FilterFiles::read(FileDetails& details) const {
    checkWritable(output);
    return readImageFile(input, details);
}

void printReport(const std::string& algorithm, const FilterFiles& files, const ImageModel& output,
                 const RunReport& report, const RunOptions& options) {
    const ImageSize size = imageSizeOf(output);
    const std::string type(voxelTypeName(output.getDataType()));
    if (options.isJson) {
        printJson({{"algorithm", algorithm},
                   {"input", files.input},
                   {"output", files.output},
                   {"size", sizeToJson(size)},
                   {"type", type},
                   {"seconds", report.seconds},
                   {"steps", report.steps}});
    } else if (!options.isQuiet) {
        printLine(files.output + ": " + toText(size) + ", " + type + ", " + secondsToText(report.seconds) + " s");
    }
}

}  // namespace zel::tool
