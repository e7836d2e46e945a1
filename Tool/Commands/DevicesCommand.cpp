#include "BuildName.h"
#include "Commands/Commands.h"
#include "Runs/Description.h"
#include "Runs/Devices.h"
#include "System/Output.h"

namespace zel::tool {

namespace {

class DevicesCommand final : public Command {
public:
    std::string name() const override { return "devices"; }
    std::string description() const override { return "List the devices that algorithms can run on, and their memory"; }

    void addOptions(CLI::App& app) override {
        app.add_flag("--json", isJson_, "Print a JSON object with an entry for each device in its list \"devices\"");
        app.footer("Without a device it says what is missing, and ends with exit code 1.");
    }

    int run() override {
        const int count = requireDevices();
        nlohmann::ordered_json devices = nlohmann::ordered_json::array();
        if (!isJson_) printLine(std::string("zel " ZEL_VERSION ", ") + buildName);
        for (int device = 0; device < count; ++device) {
            selectDevice(device);
            const DeviceMemory memory = deviceMemory();
            if (isJson_) {
                devices.push_back({{"device", device},
                                   {"name", deviceName(device)},
                                   {"freeBytes", memory.free},
                                   {"totalBytes", memory.total},
                                   {"readsHostMemory", readsHostMemory(device)}});
            } else {
                printLine("device " + std::to_string(device) + ": " + deviceName(device) + ", " +
                          bytesToText(memory.free) + " free of " + bytesToText(memory.total) +
                          (readsHostMemory(device) ? "; uses images in the host's memory in place" : ""));
            }
        }
        if (isJson_) printJson({{"version", ZEL_VERSION}, {"build", buildName}, {"devices", devices}});
        return 0;
    }

private:
    bool isJson_ = false;
};

}  // namespace

std::unique_ptr<Command> makeDevicesCommand() {
    return std::make_unique<DevicesCommand>();
}

}  // namespace zel::tool
