#include <stdexcept>

#include "Commands/Commands.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Matching/ScorePeaks.h"
#include "Runs/Description.h"
#include "Runs/NumberOption.h"
#include "Runs/TimedFiles.h"
#include "System/Output.h"
#include "Tables/TableFile.h"
#include "zel/ImageModelAdapter.h"
#include "zel/TemplateTransformation.h"

namespace zel::tool {

namespace {

using Column = tarnway::DataFrameView::Column;

/// The row that an index image has at a voxel.
std::size_t rowAt(const ImageModel& index, const std::array<std::size_t, 3>& voxel, std::size_t rowCount) {
    const ImageModelAdapter asDouble(&index, VoxelTypes::float64, DataConvertionTypes::cast);
    double row = 0;
    if (!asDouble.readRow(1, &row, voxel[0], voxel[1], voxel[2], 0, 0)) {
        throw std::runtime_error("the index image cannot be read");
    }
    if (row >= 0 && row < static_cast<double>(rowCount)) return static_cast<std::size_t>(row);
    throw std::runtime_error("the index image has row " + std::to_string(static_cast<long long>(row)) + " at (" +
                             std::to_string(voxel[0]) + ", " + std::to_string(voxel[1]) + ", " +
                             std::to_string(voxel[2]) + "), but the table has " + std::to_string(rowCount) + " rows");
}

/// Position, score, row and what the row says, a line for each peak.
std::vector<Column> describe(const std::vector<Peak>& peaks, const ImageModel& index,
                             const tarnway::DataFrameView& table) {
    std::vector<Column> columns{{"x", {}},   {"y", {}},   {"z", {}},     {"score", {}},
                                {"row", {}}, {"phi", {}}, {"theta", {}}, {"psi", {}}};
    const std::size_t angles = columns.size();
    for (const char* const scale : {"scaleX", "scaleY", "scaleZ"}) {
        if (table.columnIndex(scale)) columns.push_back({scale, {}});
    }
    const auto [columnCount, rowCount] = std::array{table.shape()[0], table.shape()[1]};
    for (const Peak& peak : peaks) {
        const std::size_t row = rowAt(index, peak.position, rowCount);
        TemplateTransformationInfo info;
        updateTemplateTransformationInfo(&table, row, columnCount, info);
        const auto position = [&](std::size_t axis) { return static_cast<double>(peak.position[axis]); };
        const std::array values = {position(0), position(1), position(2), peak.score, static_cast<double>(row),
                                   info.phi,    info.theta,  info.psi};
        for (std::size_t i = 0; i < values.size(); ++i) columns[i].values.push_back(values[i]);
        for (std::size_t i = angles; i < columns.size(); ++i) {
            columns[i].values.push_back(table.at(row, *table.columnIndex(columns[i].name)));
        }
    }
    return columns;
}

class PeaksCommand final : public Command {
public:
    std::string name() const override { return "peaks"; }
    std::string description() const override { return "List the best places of a template-matching"; }

    void addOptions(CLI::App& app) override {
        app.add_option("SCORE", scorePath_, "Scores of template-matching")->required()->type_name("");
        app.add_option("INDEX", indexPath_, "Row numbers of template-matching")->required()->type_name("");
        app.add_option("OUTPUT", output_, "Table to write, best peak first, comma-separated")
            ->required()
            ->type_name("");
        app.add_option("--table", tablePath_, "The table of the matching's rows")->required()->type_name("ROWS.csv");
        using Numbers = std::vector<double>;
        addNumberOption(app,
                        {.name = "--distance",
                         .values = "VOXELS",
                         .description = "Least distance of two peaks",
                         .isRequired = true},
                        NumberFormat<double>{1, 1, {1, 1e9, false, "voxels"}},
                        [this](const Numbers& numbers) { selection_.distance = numbers[0]; });
        addNumberOption(app,
                        {.name = "--count", .values = "N", .description = "Most peaks to list", .defaultText = "all"},
                        NumberFormat<unsigned>{1, 1, {.low = 1}},
                        [this](const std::vector<unsigned>& numbers) { selection_.maxCount = numbers[0]; });
        addNumberOption(
            app, {.name = "--threshold", .values = "S", .description = "Lowest score of a peak", .defaultText = "none"},
            NumberFormat<double>{}, [this](const Numbers& numbers) { selection_.threshold = numbers[0]; });
        app.add_flag("--quiet", isQuiet_, "Print no summary");
        app.add_flag("--json", isJson_, "Print the summary as a JSON object on standard output");
        app.footer(
            "Positions are voxels, counted from 0; angles are radians. A peak is no lower than its 26 neighbours.");
    }

    int run() override {
        checkTableWritable(output_);
        const tarnway::DataFrameView table = readTableFile(tablePath_);
        TimedFiles timed(isQuiet_);
        const HostImage scores = timed.read(scorePath_);
        const HostImage index = timed.read(indexPath_);
        requireVolumes(scores, index);
        const std::vector<Peak> peaks = findPeaks(scores, selection_);
        writeTableFile(output_, describe(peaks, index, table));
        if (isJson_) {
            printJson({{"output", output_}, {"peaks", peaks.size()}});
        } else if (!isQuiet_) {
            printLine(output_ + ": " + std::to_string(peaks.size()) + " peaks");
        }
        return 0;
    }

private:
    void requireVolumes(const HostImage& scores, const HostImage& index) const {
        for (const HostImage* const image : {&scores, &index}) {
            const std::string& path = image == &scores ? scorePath_ : indexPath_;
            if (isComplex(image->getDataType())) throw std::runtime_error(path + " holds complex numbers");
            const ImageSize size = imageSizeOf(*image);
            if (size.i3 != 1 || size.i4 != 1) throw std::runtime_error(path + " has more than three axes");
        }
        if (imageSizeOf(scores) == imageSizeOf(index)) return;
        throw std::runtime_error(indexPath_ + " is " + toText(imageSizeOf(index)) + ", but " + scorePath_ + " is " +
                                 toText(imageSizeOf(scores)));
    }

    std::string scorePath_;
    std::string indexPath_;
    std::string tablePath_;
    std::string output_;
    PeakSelection selection_;
    bool isQuiet_ = false;
    bool isJson_ = false;
};

}  // namespace

std::unique_ptr<Command> makePeaksCommand() {
    return std::make_unique<PeaksCommand>();
}

}  // namespace zel::tool
