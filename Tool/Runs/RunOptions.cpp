#include "Runs/RunOptions.h"

#include <oneapi/tbb/global_control.h>

#include <cstdlib>
#include <string>

#include "Runs/ChoiceOption.h"
#include "Runs/Devices.h"
#include "Runs/NumberOption.h"

namespace zel::tool {

namespace {

constexpr const char* group = "Options of all algorithms";

}  // namespace

void RunOptions::addTileOption(CLI::App& app) {
    const NumberFormat<unsigned> format{2, 3, tileLength, "1024,1024"};
    addOption(app,
              {.name = "--tile",
               .values = "W,H[,D]",
               .description = "Size of tiles, for images larger than the device's memory; D, for 3D algorithms, is the "
                              "image's depth by default; auto takes the largest ones that fit",
               .defaultText = "the whole image"},
              toText(tileLength),
              [this, format](const std::string& text) {
                  isTileAuto = text == "auto";
                  if (isTileAuto) return;
                  const auto numbers = parseNumbers(text, format);
                  if (!numbers) throw wrongValue("--tile", text, toText(format) + ", or auto");
                  tile = {numbers->at(0), numbers->at(1), {}};
                  if (numbers->size() > 2) tile->depth = numbers->at(2);
              })
        ->group(group);
}

void RunOptions::addPlanOption(CLI::App& app) {
    app.add_flag("--plan", isPlan, "Tell steps, tiles and device memory of the run instead of making it")->group(group);
}

void RunOptions::addTo(CLI::App& app, bool withTiles) {
    using Numbers = std::vector<unsigned>;
    const NumberFormat<unsigned> number;
    if (withTiles) addTileOption(app);
    addChoiceOption<Placement>(
        app,
        {.name = "--placement",
         .description = "Memory for input and output during the run: the host's, from where parts are copied to the "
                        "device's, or the device's. auto takes the host's, and without copies where the device can "
                        "use it in place",
         .defaultText = "auto"},
        {{"auto", Placement::automatic}, {"host", Placement::host}, {"device", Placement::device}},
        [this](Placement chosen) { placement = chosen; })
        ->group(group);
    addNumberOption(app,
                    {.name = "--device",
                     .values = "N",
                     .description = "Number of the device to run on",
                     .defaultText = "the current one"},
                    number, [this](const Numbers& numbers) { device = numbers[0]; })
        ->group(group);
    addNumberOption(app,
                    {.name = "--threads",
                     .values = "N",
                     .description = "CPU threads of the host platform; 0 for one on each core",
                     .defaultText = std::to_string(threads_)},
                    number, [this](const Numbers& numbers) { threads_ = numbers[0]; })
        ->group(group);
    app.add_flag("--quiet", isQuiet, "Print neither progress bar nor summary")->group(group);
    app.add_flag("--json", isJson, "Print the summary as a JSON object on standard output")->group(group);
}

void RunOptions::apply() const {
    if (threads_ != 0) {
        // The host platform reads its environment when it is first used; the core's own loops are TBB's.
        setenv("ZEL_HOST_THREADS", std::to_string(threads_).c_str(), 1);
        using oneapi::tbb::global_control;
        static const global_control limit(global_control::max_allowed_parallelism, threads_);
    }
    const int count = requireDevices();
    if (!device) return;
    if (*device >= static_cast<unsigned>(count)) {
        throw wrongValue("--device", std::to_string(*device),
                         count == 1 ? "0: this machine has one device" : "0 to " + std::to_string(count - 1));
    }
    selectDevice(static_cast<int>(*device));
}

}  // namespace zel::tool
