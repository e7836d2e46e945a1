#include "Runs/RunOptions.h"

#include <cuda_runtime.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "Runs/NumberOption.h"

namespace zel::tool {

namespace {

Placement parsePlacement(const std::string& text) {
    if (text == "host") return Placement::host;
    if (text == "device") return Placement::device;
    throw CLI::ValidationError("--placement is '" + text + "', but takes host or device");
}

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

void RunOptions::addTo(CLI::App& app) {
    constexpr const char* group = "Options of all algorithms";
    addNumberOption(app, "--tile", {2, 3}, "two or three whole numbers from 1, such as 1024,1024",
                    "Work in tiles of that size, for images larger than the device's memory. D is for 3D algorithms, "
                    "the image's whole depth without it",
                    [this](const Numbers& numbers) {
                        tile = {numbers[0], numbers[1], {}};
                        if (numbers.size() > 2) tile->depth = numbers[2];
                    })
        ->type_name("W,H[,D]")
        ->group(group);
    app.add_option_function<std::string>(
           "--placement", [this](const std::string& text) { placement = parsePlacement(text); },
           "Where input and output lie: host, the default, or device")
        ->type_name("PLACE")
        ->group(group);
    addNumberOption(app, "--device", 1, "a whole number from 0", "Device to run on",
                    [this](const Numbers& numbers) { device = numbers[0]; })
        ->type_name("N")
        ->group(group);
    addNumberOption(app, "--threads", 1, "a whole number from 0",
                    "CPU threads of the host platform; 0, the default, for one on each core",
                    [this](const Numbers& numbers) { threads_ = numbers[0]; })
        ->type_name("N")
        ->group(group);
    app.add_flag("--quiet", isQuiet, "Neither progress bar nor summary")->group(group);
    app.add_flag("--json", isJson, "Tell what was done as an object of JSON on standard output")->group(group);
}

void RunOptions::apply() const {
    // The host platform looks at its environment when it is first used.
    if (threads_ != 0) setenv("ZEL_HOST_THREADS", std::to_string(threads_).c_str(), 1);
    if (device) selectDevice(*device);
}

}  // namespace zel::tool
