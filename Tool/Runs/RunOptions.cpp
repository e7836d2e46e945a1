#include "Runs/RunOptions.h"

#include <cuda_runtime.h>
#include <oneapi/tbb/global_control.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "Runs/ChoiceOption.h"
#include "Runs/NumberOption.h"

namespace zel::tool {

namespace {

constexpr const char* group = "Options of all algorithms";

void selectDevice(unsigned device) {
    int count = 0;
    if (const cudaError_t status = cudaGetDeviceCount(&count); status != cudaSuccess) {
        throw std::runtime_error(std::string("no device can be used: ") + cudaGetErrorString(status));
    }
    if (device >= static_cast<unsigned>(count)) {
        throw std::runtime_error("there is no device " + std::to_string(device) + "; this machine has " +
                                 (count == 1 ? "only device 0" : "devices 0 to " + std::to_string(count - 1)));
    }
    if (const cudaError_t status = cudaSetDevice(static_cast<int>(device)); status != cudaSuccess) {
        throw std::runtime_error("device " + std::to_string(device) + " cannot be used: " + cudaGetErrorString(status));
    }
}

}  // namespace

void RunOptions::addTileOption(CLI::App& app) {
    using Numbers = std::vector<unsigned>;
    addNumberOption(
        app,
        {.name = "--tile",
         .values = "W,H[,D]",
         .description =
             "Size of tiles, for images larger than the device's memory; D, for 3D algorithms, is the image's "
             "depth by default",
         .defaultText = "the whole image"},
        NumberFormat<unsigned>{2, 3, tileLength, "1024,1024"},
        [this](const Numbers& numbers) {
            tile = {numbers[0], numbers[1], {}};
            if (numbers.size() > 2) tile->depth = numbers[2];
        })
        ->group(group);
}

void RunOptions::addTo(CLI::App& app, bool withTiles) {
    using Numbers = std::vector<unsigned>;
    const NumberFormat<unsigned> number;
    if (withTiles) addTileOption(app);
    addChoiceOption<Placement>(
        app,
        {.name = "--placement", .description = "Memory for input and output during the run", .defaultText = "host"},
        {{"host", Placement::host}, {"device", Placement::device}}, [this](Placement chosen) { placement = chosen; })
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
    if (device) selectDevice(*device);
}

}  // namespace zel::tool
