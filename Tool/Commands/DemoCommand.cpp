#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "Commands/Commands.h"
#include "Demo/ContactSheet.h"
#include "Demo/DemoCases.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/Description.h"
#include "System/ErrorText.h"
#include "System/Output.h"

namespace zel::tool {

namespace {

/// A line of the table.
struct DemoResult {
    std::string subject;
    std::string algorithm;
    std::string parameters;
    RunReport report;
    std::string file;
};

class DemoCommand final : public Command {
public:
    std::string name() const override { return "demo"; }
    std::string description() const override { return "Run the algorithms on a generated picture and volume"; }

    void addOptions(CLI::App& app) override {
        app.add_option("FOLDER", folder_, "Where the files go; made when missing")
            ->capture_default_str()
            ->type_name("");
        options_.addTo(app);
    }

    int run() override {
        options_.apply();
        makeFolder();
        ContactSheet sheet;
        std::vector<DemoResult> results;
        for (const DemoSection& section : demoSections()) runSection(section, sheet, results);
        writeImageFile(inFolder(sheetFile), sheet.render());
        report(results);
        return 0;
    }

private:
    static constexpr const char* sheetFile = "contact-sheet.png";

    std::string inFolder(const std::string& file) const { return (std::filesystem::path(folder_) / file).string(); }
    std::string fileOf(const DemoSubject& subject, const std::string& what) const {
        return inFolder(subject.prefix + what + subject.extension);
    }

    void makeFolder() const {
        std::error_code failure;
        std::filesystem::create_directories(folder_, failure);
        if (failure) throw FileError("cannot make folder " + folder_ + ": " + systemErrorText(failure.value()));
    }

    void runSection(const DemoSection& section, ContactSheet& sheet, std::vector<DemoResult>& results) const {
        const DemoSubject& subject = section.subject;
        const HostImage input = subject.make();
        results.push_back({subject.name, "", "", {}, fileOf(subject, "input")});
        writeImageFile(results.back().file, input);
        sheet.add(input, subject.name);
        for (const DemoCase& demo : section.cases) {
            HostImage output = makeImageLike(input, input.getDataType());
            const RunReport report = demo.run(input, output, options_);
            const bool isOneOfMany = !demo.variant.empty();
            results.push_back({subject.name, demo.algorithm, demo.parameters, report,
                               fileOf(subject, demo.algorithm + (isOneOfMany ? "-" + demo.variant : ""))});
            writeImageFile(results.back().file, output);
            sheet.add(output, demo.algorithm + (isOneOfMany ? " " + demo.variant : ""));
        }
    }

    void report(const std::vector<DemoResult>& results) const {
        if (options_.isJson) {
            auto list = nlohmann::ordered_json::array();
            for (const DemoResult& result : results) {
                list.push_back({{"subject", result.subject},
                                {"algorithm", result.algorithm},
                                {"parameters", result.parameters},
                                {"seconds", result.report.seconds},
                                {"steps", result.report.steps},
                                {"file", result.file}});
            }
            printJson({{"results", list}, {"contactSheet", inFolder(sheetFile)}});
        } else if (!options_.isQuiet) {
            printRow({"subject", "algorithm", "parameters", "seconds", "steps", "file"});
            for (const DemoResult& result : results) {
                const bool isRun = !result.algorithm.empty();
                printRow({result.subject, result.algorithm, result.parameters,
                          isRun ? secondsToText(result.report.seconds) : "",
                          isRun ? std::to_string(result.report.steps) : "", result.file});
            }
            printLine("all of them in one picture: " + inFolder(sheetFile));
        }
    }

    static void printRow(const std::array<std::string, 6>& cells) {
        std::array<char, 128> start{};
        std::snprintf(start.data(), start.size(), "%-8s %-16s %-34s %9s %6s  ", cells[0].c_str(), cells[1].c_str(),
                      cells[2].c_str(), cells[3].c_str(), cells[4].c_str());
        printLine(start.data() + cells[5]);
    }

    std::string folder_ = "zel-demo";
    RunOptions options_;
};

}  // namespace

std::unique_ptr<Command> makeDemoCommand() {
    return std::make_unique<DemoCommand>();
}

}  // namespace zel::tool
