#include "Runs/CompressionOption.h"

#include <algorithm>
#include <utility>

#include "ImageFiles/ImageFile.h"
#include "ImageFiles/Tiff/TiffWriter.h"
#include "Runs/ChoiceOption.h"

namespace zel::tool {

void addCompressionOption(CLI::App& app, FileDetails& details, std::function<std::vector<std::string>()> outputs) {
    std::vector<Choice<std::string>> choices{{"none", ""}};
    for (const std::string& name : tiffCompressions()) choices.push_back({name, name});
    addChoiceOption<std::string>(
        app, {.name = "--compression", .description = "Of a TIFF output, without loss", .defaultText = "none"}, choices,
        [&details](const std::string& scheme) { details.compression = scheme; });
    app.parse_complete_callback([&details, outputs = std::move(outputs)] {
        const auto isTiff = [](const std::string& path) { return !path.empty() && outputFormatName(path) == "TIFF"; };
        if (details.compression.empty()) return;
        const std::vector<std::string> names = outputs();
        if (std::ranges::any_of(names, isTiff)) return;
        throw CLI::ValidationError("--compression is for TIFF outputs, such as out.tif; " + names.front() + " is none");
    });
}

}  // namespace zel::tool
