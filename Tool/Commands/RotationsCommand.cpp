#include <array>
#include <cstdio>
#include <optional>

#include "Commands/Commands.h"
#include "Matching/OrientationCovering.h"
#include "Runs/ChoiceOption.h"
#include "Runs/NumberOption.h"
#include "System/Output.h"
#include "Tables/TableFile.h"

namespace zel::tool {

namespace {

class RotationsCommand final : public Command {
public:
    std::string name() const override { return "rotations"; }
    std::string description() const override { return "Make a table of evenly spread rotations for template-matching"; }

    void addOptions(CLI::App& app) override {
        app.add_option("OUTPUT", output_, "Table to write: phi, theta and psi in radians, comma-separated")
            ->required()
            ->type_name("");
        const auto addAngle = [&](const OptionWords& words, double high, auto set) {
            addNumberOption(app, words, NumberFormat<double>{1, 1, {0.1, high, false, "degrees"}}, set);
        };
        using Numbers = std::vector<double>;
        addAngle({.name = "--step",
                  .values = "DEGREES",
                  .description = "Distance of directions of the template's z axis",
                  .isRequired = true},
                 90, [this](const Numbers& numbers) { step_ = numbers[0]; });
        addAngle({.name = "--in-plane-step",
                  .values = "DEGREES",
                  .description = "Largest step of the turn about the template's z axis; 360 for none",
                  .defaultText = "that of --step"},
                 360, [this](const Numbers& numbers) { inPlaneStep_ = numbers[0]; });
        addChoiceOption<bool>(app,
                              {.name = "--sphere",
                               .description = "Directions over the full sphere or its half with z >= 0",
                               .defaultText = "full"},
                              {{"full", false}, {"half", true}}, [this](bool isHalf) { isHalf_ = isHalf; });
        app.add_flag("--quiet", isQuiet_, "Print no summary");
        app.add_flag("--json", isJson_, "Print the summary as a JSON object on standard output");
        app.footer(
            "A row turns the template by Rz(phi) Rx(theta) Rz(psi). Directions lie on a spherical Fibonacci lattice.\n"
            "The summary tells the largest gap: how far an orientation can be from the nearest row.");
    }

    int run() override {
        checkTableWritable(output_);
        const OrientationCovering covering(step_, inPlaneStep_.value_or(step_), isHalf_);
        writeTableFile(output_, covering.columns());
        report(covering);
        return 0;
    }

private:
    void report(const OrientationCovering& covering) const {
        const std::size_t rows = covering.directionCount() * covering.turnCount();
        if (isJson_) {
            printJson({{"output", output_},
                       {"rows", rows},
                       {"directions", covering.directionCount()},
                       {"turns", covering.turnCount()},
                       {"largestGapDegrees", covering.largestGapDegrees()}});
        } else if (!isQuiet_) {
            std::array<char, 32> gap{};
            std::snprintf(gap.data(), gap.size(), "%.1f", covering.largestGapDegrees());
            printLine(output_ + ": " + std::to_string(rows) + " rows, " + std::to_string(covering.directionCount()) +
                      " directions with " + std::to_string(covering.turnCount()) + " turns each, largest gap " +
                      gap.data() + " degrees");
        }
    }

    std::string output_;
    double step_ = 0;
    std::optional<double> inPlaneStep_;
    bool isHalf_ = false;
    bool isQuiet_ = false;
    bool isJson_ = false;
};

}  // namespace

std::unique_ptr<Command> makeRotationsCommand() {
    return std::make_unique<RotationsCommand>();
}

}  // namespace zel::tool
