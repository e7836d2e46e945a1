#include <array>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands/Commands.h"
#include "Commands/CrossCorrelationCommand.h"
#include "Commands/FilterCommand.h"
#include "Commands/TemplateMatchingCommand.h"
#include "Demo/ContactSheet.h"
#include "Demo/DemoCases.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/Description.h"
#include "System/ErrorText.h"
#include "System/Output.h"
#include "zel/ImageModelSizeProxy.h"

namespace zel::tool {

namespace {

/// A line of the table. That of a subject's own image has no command.
struct DemoResult {
    std::string subject;
    std::string command{};
    std::string parameters{};
    RunReport report{};
    std::string file{};
    std::string pattern{};  ///< the file of the template of a search
    std::string index{};    ///< the file of its second result
};

/// The case's command, with its parameters parsed as those of a command line are.
std::unique_ptr<AnyFilterCommand> parseCase(const DemoCase& demo) {
    for (auto& command : makeCommands()) {
        auto* const filter = dynamic_cast<AnyFilterCommand*>(command.get());
        if (filter == nullptr || filter->name() != demo.command) continue;
        CLI::App parser;
        filter->addParameters(parser);
        parser.parse(demo.parameters);
        command.release();  // NOLINT(bugprone-unused-return-value): it is filter
        return std::unique_ptr<AnyFilterCommand>(filter);
    }
    throw std::logic_error(std::string("there is no filter command ") + demo.command);
}

class DemoCommand final : public Command {
public:
    std::string name() const override { return "demo"; }
    std::string description() const override { return "Run the algorithms on a generated picture and volume"; }

    void addOptions(CLI::App& app) override {
        app.add_option("FOLDER", folder_, "Folder for the files; made when missing")
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
    std::string fileOf(const DemoSubject& subject, const std::string& title) const {
        return inFolder(subject.prefix + title + subject.extension);
    }

    void makeFolder() const {
        std::error_code failure;
        std::filesystem::create_directories(folder_, failure);
        if (failure) throw FileError("cannot make folder " + folder_ + ": " + systemErrorText(failure.value()));
    }

    void runSection(const DemoSection& section, ContactSheet& sheet, std::vector<DemoResult>& results) const {
        const DemoSubject& subject = section.subject;
        const HostImage input = subject.make();
        results.push_back({.subject = subject.name, .file = fileOf(subject, "input")});
        writeImageFile(results.back().file, input);
        sheet.add(input, subject.name);
        for (const DemoCase& demo : section.cases) {
            const auto filter = parseCase(demo);
            HostImage output = filter->makeOutput(input);
            const RunReport report = filter->filter(input, output, options_);
            results.push_back({subject.name, demo.command, demo.parameters, report, fileOf(subject, demo.title("-"))});
            writeImageFile(results.back().file, output);
            sheet.add(output, demo.title(" "));
        }
        for (const DemoSearch& search : section.searches) runSearch(subject, input, search, sheet, results);
    }

    void runSearch(const DemoSubject& subject, const HostImage& input, const DemoSearch& search, ContactSheet& sheet,
                   std::vector<DemoResult>& results) const {
        HostImage pattern(input.getDataType(), {search.width, search.height, search.depth});
        copyVoxels(ImageModelSizeProxy(&input, search.left, search.width, search.top, search.height, search.front,
                                       search.depth, 0, 1, 0, 1),
                   pattern);
        writeImageFile(fileOf(subject, "template"), pattern);
        if (search.depth == 1) {
            correlate(subject, input, pattern, search, sheet, results);
        } else {
            match(subject, input, pattern, sheet, results);
        }
    }

    void match(const DemoSubject& subject, const HostImage& input, const HostImage& pattern, ContactSheet& sheet,
               std::vector<DemoResult>& results) const {
        TemplateMatchingCommand command;
        const MatchingResult found = command.search(input, pattern, VoxelTypes::uint8, options_);
        const std::string name = inFolder(subject.prefix + command.name());
        results.push_back({.subject = subject.name,
                           .command = command.name(),
                           .report = found.report,
                           .file = name + ".npy",
                           .pattern = fileOf(subject, "template"),
                           .index = name + "-rows.npy"});
        writeImageFile(results.back().file, found.score);
        writeImageFile(results.back().index, found.index);
        sheet.add(found.score, command.name());
    }

    void correlate(const DemoSubject& subject, const HostImage& input, const HostImage& pattern,
                   const DemoSearch& search, ContactSheet& sheet, std::vector<DemoResult>& results) const {
        CrossCorrelationCommand command;
        CLI::App parser;
        command.addParameters(parser);
        parser.parse(search.parameters);
        const Match match = command.search(input, pattern, options_);
        const std::string scores = inFolder(subject.prefix + command.name() + ".npy");
        results.push_back(
            {subject.name, command.name(), search.parameters, match.report, scores, fileOf(subject, "template")});
        writeImageFile(scores, match.scores);
        writeImageFile(fileOf(subject, command.name() + "-marked"), match.marked);
        sheet.add(match.scores, command.name());
        sheet.add(match.marked, "template found");
    }

    void report(const std::vector<DemoResult>& results) const {
        if (options_.isJson) {
            auto list = nlohmann::ordered_json::array();
            for (const DemoResult& result : results) {
                list.push_back({{"subject", result.subject},
                                {"algorithm", result.command},
                                {"parameters", result.parameters},
                                {"seconds", result.report.seconds},
                                {"steps", result.report.steps},
                                {"file", result.file}});
                if (!result.pattern.empty()) list.back()["template"] = result.pattern;
                if (!result.index.empty()) list.back()["index"] = result.index;
            }
            printJson({{"results", list}, {"contactSheet", inFolder(sheetFile)}});
        } else if (!options_.isQuiet) {
            printRow({"subject", "algorithm", "parameters", "seconds", "steps", "file"});
            for (const DemoResult& result : results) {
                const bool isRun = !result.command.empty();
                printRow({result.subject, result.command, result.parameters,
                          isRun ? secondsToText(result.report.seconds) : "",
                          isRun ? std::to_string(result.report.steps) : "", result.file});
            }
            printLine("all of them in one picture: " + inFolder(sheetFile));
        }
    }

    static void printRow(const std::array<std::string, 6>& cells) {
        std::array<char, 128> start{};
        std::snprintf(start.data(), start.size(), "%-8s %-17s %-34s %9s %6s  ", cells[0].c_str(), cells[1].c_str(),
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
