#pragma once

#include <CLI/CLI.hpp>
#include <optional>

namespace zel::tool {

/// The memory for an algorithm's input and output, as the options say it.
enum class Placement { automatic, host, device };

/// The size of tiles, in voxels.
struct TileOption {
    unsigned width = 0;
    unsigned height = 0;
    std::optional<unsigned> depth;  ///< for 3D algorithms; without it, the whole depth of the image
};

/// The options that algorithms have in common.
struct RunOptions {
    std::optional<TileOption> tile;  ///< without it, the image is one tile
    bool isTileAuto = false;         ///< or, where the device's memory asks for it, as many as fit
    Placement placement = Placement::automatic;
    std::optional<unsigned> device;
    bool isPlan = false;  ///< the run is planned and not made
    bool isQuiet = false;
    bool isJson = false;

    /// The object has to outlive the parser.
    /// @param withTiles  with --tile, for algorithms that leave tiling to the caller.
    void addTo(CLI::App& app, bool withTiles = true);

    /// Adds --plan, for commands that heed it.
    void addPlanOption(CLI::App& app);

    /// Sets the process's number of threads and current device. Call it before anything uses a device.
    /// @throws std::runtime_error  when there is no device; CLI::ValidationError when there is none of that number.
    void apply() const;

private:
    void addTileOption(CLI::App& app);

    unsigned threads_ = 0;  // 0: one on each core
};

}  // namespace zel::tool
