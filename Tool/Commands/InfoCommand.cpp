#include <array>
#include <type_traits>
#include <vector>

#include "Commands/Commands.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/NumberText.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/Description.h"
#include "Runs/ProgressBar.h"
#include "Runs/TimedFiles.h"
#include "System/Output.h"

namespace zel::tool {

namespace {

using Json = nlohmann::ordered_json;

/// Smallest and largest value, exact in every type; NaN is ignored.
struct ValueRange {
    Json minimum;  ///< null where there is none: complex numbers have no order
    Json maximum;
    std::string text;  ///< "0 to 255"
};

/// JSON has no infinite numbers: they become the texts "inf" and "-inf".
template <typename T>
Json jsonNumber(T value) {
    const bool isInfinite = std::is_floating_point_v<T> && value - value != 0;
    return isInfinite ? Json(numberToText(value)) : Json(value);
}

template <typename T>
ValueRange rangeOf(const ImageModel& image) {
    const ImageSize size = imageSizeOf(image);
    std::vector<T> voxels(size.x);
    bool isFound = false;
    T minimum{}, maximum{};
    const auto takeRow = [&](const RowIndex& row) {
        readWholeRow(image, voxels.data(), row);
        for (const T value : voxels) {
            if (value != value) continue;  // NaN
            minimum = !isFound || value < minimum ? value : minimum;
            maximum = !isFound || maximum < value ? value : maximum;
            isFound = true;
        }
    };
    ProgressBar bar("measuring", false);
    forEachRow(size, takeRow, bar.forWork());
    if (!isFound) return {};
    return {jsonNumber(minimum), jsonNumber(maximum), numberToText(minimum) + " to " + numberToText(maximum)};
}

ValueRange rangeOf(const ImageModel& image) {
    ValueRange range;
    visitVoxelType(image.getDataType(), RealTypes{}, [&]<typename T>() { range = rangeOf<T>(image); });
    return range;
}

struct ImageDescription {
    std::string file;
    ImageSize size;
    std::string type;
    std::array<double, 3> spacing{};
    ValueRange range;
    FileDetails details{};
};

ImageDescription describe(const std::string& path) {
    FileDetails details;
    const HostImage image = TimedFiles(false).read(path, details);
    return {.file = path,
            .size = imageSizeOf(image),
            .type = std::string(voxelTypeName(image.getDataType())),
            .spacing = {image.getSpacing(0), image.getSpacing(1), image.getSpacing(2)},
            .range = rangeOf(image),
            .details = details};
}

std::string toLine(const ImageDescription& image) {
    const std::size_t axisCount = image.size.z > 1 ? 3 : 2;
    std::string spacing;
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        spacing += (axis > 0 ? " x " : "") + numberToText(image.spacing[axis]);
    }
    std::string notes;
    for (const std::string& note : image.details.notes) notes += "; " + note;
    return image.file + ": " + image.details.format + ", " + toText(image.size) + ", " + image.type + ", spacing " +
           spacing + (image.details.unit.empty() ? "" : " " + image.details.unit) +
           (image.range.text.empty() ? "" : ", range " + image.range.text) + notes;
}

Json toJson(const ImageDescription& image) {
    return {{"file", image.file},
            {"format", image.details.format},
            {"size", sizeToJson(image.size)},
            {"type", image.type},
            {"spacing", image.spacing},
            {"unit", image.details.unit},
            {"minimum", image.range.minimum},
            {"maximum", image.range.maximum},
            {"notes", image.details.notes}};
}

class InfoCommand final : public Command {
public:
    std::string name() const override { return "info"; }
    std::string description() const override { return "Show the size, type, spacing and value range of image files"; }

    void addOptions(CLI::App& app) override {
        app.add_option("FILE", files_, "Images: " + imageFileExtensions() + "; - for standard input")
            ->required()
            ->type_name("");
        app.add_flag("--json", isJson_, "Print a JSON object with an entry for each file in its list \"images\"");
    }

    /// A file that cannot be read does not keep the others from being shown.
    int run() override {
        Json images = Json::array();
        bool hasFailed = false;
        for (const std::string& path : files_) {
            try {
                const ImageDescription image = describe(path);
                if (isJson_) {
                    images.push_back(toJson(image));
                } else {
                    printLine(toLine(image));
                }
            } catch (const FileError& error) {
                printError(error.what());
                hasFailed = true;
            }
        }
        if (isJson_) printJson({{"images", images}});
        return hasFailed ? 1 : 0;
    }

private:
    std::vector<std::string> files_;
    bool isJson_ = false;
};

}  // namespace

std::unique_ptr<Command> makeInfoCommand() {
    return std::make_unique<InfoCommand>();
}

}  // namespace zel::tool
