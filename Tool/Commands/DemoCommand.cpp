#include <array>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "Cli/Output.h"
#include "Commands/Commands.h"
#include "Commands/DemoPicture.h"
#include "Commands/Description.h"
#include "Commands/SliceRun.h"
#include "ImageFiles/FileError.h"
#include "ImageFiles/ImageFile.h"
#include "ImageFiles/Rows.h"
#include "zel/algorithms/CudaBoxFilter2d.h"

namespace zel::tool {

namespace {

RunReport runBoxFilter(const ImageModel& input, ImageModel& output, const RunOptions& options) {
    return runFilter2d<cuda::CudaBoxFilter2d>(input, output, options, [](cuda::CudaBoxFilter2d& filter) {
        filter.kernelSizeX = 9;
        filter.kernelSizeY = 9;
    });
}

/// One algorithm on the demo picture.
struct DemoCase {
    const char* algorithm;  ///< also the name of the file, with .png
    const char* parameters;
    RunReport (*run)(const ImageModel& input, ImageModel& output, const RunOptions& options);
};

constexpr DemoCase demoCases[] = {
    {"box-filter", "--kernel 9,9", runBoxFilter},
};

struct DemoResult {
    DemoCase demo;
    std::string file;
    RunReport report;
};

class DemoCommand final : public Command {
public:
    std::string name() const override { return "demo"; }
    std::string description() const override { return "Run the algorithms on a generated picture"; }

    void addOptions(CLI::App& app) override {
        app.add_option("FOLDER", folder_, "Where the pictures go; made when missing")
            ->capture_default_str()
            ->type_name("");
        options_.addTo(app);
    }

    int run() override {
        options_.apply();
        makeFolder();
        const HostImage input = makeDemoPicture();
        writeImageFile(inFolder("input.png"), input);
        std::vector<DemoResult> results;
        for (const DemoCase& demo : demoCases) {
            HostImage output = makeImageLike(input, input.getDataType());
            const RunReport report = demo.run(input, output, options_);
            results.push_back({demo, inFolder(std::string(demo.algorithm) + ".png"), report});
            writeImageFile(results.back().file, output);
        }
        report(results);
        return 0;
    }

private:
    std::string inFolder(const std::string& file) const { return (std::filesystem::path(folder_) / file).string(); }

    void makeFolder() const {
        std::error_code failure;
        std::filesystem::create_directories(folder_, failure);
        if (failure) throw FileError("cannot make folder " + folder_ + ": " + systemErrorText(failure.value()));
    }

    void report(const std::vector<DemoResult>& results) const {
        if (options_.isJson) {
            auto list = nlohmann::ordered_json::array();
            for (const auto& [demo, file, report] : results) {
                list.push_back({{"algorithm", demo.algorithm},
                                {"parameters", demo.parameters},
                                {"seconds", report.seconds},
                                {"steps", report.steps},
                                {"output", file}});
            }
            printJson({{"input", inFolder("input.png")}, {"results", list}});
        } else if (!options_.isQuiet) {
            printRow("algorithm", "parameters", "seconds", "steps", "file");
            printRow("", "", "", "", inFolder("input.png"));
            for (const auto& [demo, file, report] : results) {
                printRow(demo.algorithm, demo.parameters, secondsToText(report.seconds), std::to_string(report.steps),
                         file);
            }
        }
    }

    static void printRow(const std::string& algorithm, const std::string& parameters, const std::string& seconds,
                         const std::string& steps, const std::string& file) {
        std::array<char, 128> start{};
        std::snprintf(start.data(), start.size(), "%-20s %-20s %9s %7s  ", algorithm.c_str(), parameters.c_str(),
                      seconds.c_str(), steps.c_str());
        printLine(start.data() + file);
    }

    std::string folder_ = "zel-demo";
    RunOptions options_;
};

}  // namespace

std::unique_ptr<Command> makeDemoCommand() {
    return std::make_unique<DemoCommand>();
}

}  // namespace zel::tool
