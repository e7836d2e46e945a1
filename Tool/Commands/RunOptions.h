#pragma once

#include <CLI/CLI.hpp>
#include <optional>

#include "zel/Vector.h"

namespace zel::tool {

/// Where an algorithm finds its input and leaves its output.
enum class Placement { host, device };

/// The options that all algorithms have.
struct RunOptions {
    std::optional<Vector2<unsigned>> tile;  ///< without it, the image as a whole
    Placement placement = Placement::host;
    std::optional<unsigned> device;
    bool isQuiet = false;
    bool isJson = false;

    /// The object has to outlive the parser.
    void addTo(CLI::App& app);

    /// Makes the threads and the device of the options those of the process. Before anything uses a device.
    /// @throws std::runtime_error when there is no such device.
    void apply() const;

private:
    unsigned threads_ = 0;  // 0: one on each core
};

}  // namespace zel::tool
