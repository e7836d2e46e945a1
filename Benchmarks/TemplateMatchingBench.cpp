#include <array>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <random>

#include "Comparison.h"
#include "MatchingRun.h"
#include "PythonPeers.h"

namespace zel::bench {

namespace {

using Run = test::MatchingRun;

constexpr std::size_t templateLength = 21;

/// What the 13 steps of a row end. A mask that stays takes the first three at once.
constexpr std::array stageNames = {"mask's resizing",
                                   "mask's turn",
                                   "mask's upload",
                                   "mask forward",
                                   "template's turn",
                                   "template's upload",
                                   "statistics",
                                   "template forward",
                                   "local mean",
                                   "local mean square",
                                   "product",
                                   "inverse, normalisation",
                                   "merge"};

/// Adds up the time of each stage over all rows of a run in one piece.
class RowClock final : public InteractionInterface {
public:
    explicit RowClock(std::uint64_t stepsBeforeRows) : before_(stepsBeforeRows) {}

    void progress(std::uint64_t done, std::uint64_t total) override {
        const auto now = std::chrono::steady_clock::now();
        if (done > before_ && done < total)
            seconds_[(done - before_ - 1) % seconds_.size()] += std::chrono::duration<double>(now - last_).count();
        last_ = now;
    }
    const std::array<double, stageNames.size()>& seconds() const { return seconds_; }

private:
    std::uint64_t before_;
    std::chrono::steady_clock::time_point last_;
    std::array<double, stageNames.size()> seconds_{};
};

std::string stagesText(Run& run, std::size_t rows) {
    RowClock clock(3);  // statistics, image, template
    run.filter.run(&clock);
    std::string text = "  a row's stages, ms:";
    double host = 0, sum = 0;
    for (std::size_t i = 0; i < stageNames.size(); ++i) {
        const double milliseconds = 1000 * clock.seconds()[i] / static_cast<double>(rows);
        char part[64];
        std::snprintf(part, sizeof part, "%s %s %.2f", i == 0 ? "" : ",", stageNames[i], milliseconds);
        text += part;
        sum += milliseconds;
        if (i <= 1 || i == 4) host += milliseconds;
    }
    char total[64];
    std::snprintf(total, sizeof total, "; in all %.2f, of it turned on the host %.0f %%", sum, 100 * host / sum);
    return text + total;
}

/// Rows of random rotations.
std::shared_ptr<const tarnway::DataFrameView> randomRotations(std::size_t rows) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> angle(0, 6.28), height(-1, 1);
    std::vector<tarnway::DataFrameView::Column> columns{{"phi", {}}, {"theta", {}}, {"psi", {}}};
    for (std::size_t row = 0; row < rows; ++row) {
        columns[0].values.push_back(angle(random));
        columns[1].values.push_back(std::acos(height(random)));
        columns[2].values.push_back(angle(random));
    }
    return test::tableOf(columns);
}

nlohmann::json anglesOf(const tarnway::DataFrameView& rotations) {
    nlohmann::json rows = nlohmann::json::array();
    for (std::size_t row = 0; row < rotations.shape()[1]; ++row)
        rows.push_back({rotations.at(row, 0), rotations.at(row, 1), rotations.at(row, 2)});
    return rows;
}

/// 1 in a ball that the template's cube holds, 0 outside.
HostImage ballMask() {
    HostImage mask(VoxelTypes::float32, {templateLength, templateLength, templateLength});
    const auto square = [](std::size_t i) { return (static_cast<int>(i) - 10) * (static_cast<int>(i) - 10); };
    for (std::size_t i = 0; i < templateLength * templateLength * templateLength; ++i) {
        const int squares = square(i % templateLength) + square(i / templateLength % templateLength) +
                            square(i / (templateLength * templateLength));
        test::voxels<float>(mask)[i] = squares <= 100 ? 1 : 0;
    }
    return mask;
}

Comparison matching(std::size_t size, std::size_t rows, bool follows) {
    const auto image = std::make_shared<HostImage>(test::randomImage<float>({size, size, size}, 1));
    const auto pattern =
        std::make_shared<HostImage>(test::randomImage<float>({templateLength, templateLength, templateLength}, 2));
    const auto mask = std::make_shared<HostImage>(ballMask());
    const auto run = std::make_shared<Run>(*image, *pattern, VoxelTypes::uint16, test::Placement3d{});
    run->filter.inputMask = mask.get();
    run->filter.maskFollowsTransformation = follows;
    run->filter.transformationTable = randomRotations(rows);

    Comparison result;
    addPythonPeers(result, "matching", {image, pattern, mask},
                   {{"rows", anglesOf(*run->filter.transformationTable.get())}, {"follows", follows}});
    result.agreement = {[run, image, pattern, mask]() -> const ImageModel& {
                            run->filter.run();
                            return run->hostScore;
                        },
                        1e-5};
    result.bytes = 10 * static_cast<double>(size * size * size);
    for (const int threads : {1, 2}) {
        result.ours.push_back({"host images, " + std::to_string(threads) + "T",
                               [run, image, pattern, mask] { run->filter.run(); }, threads});
    }
    result.remark = [=] { return stagesText(*run, rows); };
    return result;
}

}  // namespace

void addTemplateMatchingCases(Comparisons& comparisons) {
    for (const std::size_t size : {96, 100, 160}) {
        for (const std::size_t rows : {8, 64, 512}) {
            if (size != 100 && rows == 512) continue;
            for (const bool follows : {false, true}) {
                const std::string name = "matching " + std::to_string(size) + " rows " + std::to_string(rows) +
                                         (follows ? " turning mask" : " fixed mask");
                comparisons.add(name, [=] { return matching(size, rows, follows); });
            }
        }
    }
}

}  // namespace zel::bench
