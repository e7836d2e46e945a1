#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::tool {

/// What an MRC header says besides voxels, sizes and spacing. Threes are of x, y and z, whatever the file's axis order.
struct MrcDetails {
    std::array<int, 3> start{};  ///< NSTART: where the image begins, in voxels of the cell
    std::array<int, 3>
        sampling{};  ///< MX, MY, MZ: voxels along the cell; with `cell` 0 where the file has no valid one
    std::array<float, 3> cell{};
    std::array<float, 3> angles{90, 90, 90};
    std::array<float, 3> origin{};
    int spaceGroup = 0;  ///< of the crystal; MRC also tells stacks by it
    static constexpr int imageStack = 0, volume = 1, volumeStack = 401, lastVolumeStack = 630;
    bool isVolumeStack() const { return spaceGroup >= volumeStack && spaceGroup <= lastVolumeStack; }
    std::vector<std::string> labels{};
    std::size_t extendedBytes = 0;  ///< of an extended header, which is not kept
};

/// What a TIFF file's description says besides sizes and spacing.
struct TiffDetails {
    std::string omeXml;         ///< the whole description of an OME file
    std::string pageOrder;      ///< of its axes over the pages, the fastest first: "CZT"
    std::string imageJLines;    ///< what else ImageJ wrote, such as "mode=composite\n"
    bool hasImageJTag = false;  ///< ImageJ's labels, colour tables and overlays, which are not kept
};

/// What an image file says besides voxels, sizes and spacing. It goes with the image from the file that was read to the
/// one that is written, with some that the program adds; a format writes what it knows and leaves the rest.
struct FileDetails {
    std::string format;            ///< of the file that was read: "NPY"
    bool hasSpacing = false;       ///< of other than 1
    std::size_t npyAxisCount = 0;  ///< of a NumPy array: (1, h, w) has 3; 0 where the file was none
    std::optional<MrcDetails> mrc;
    TiffDetails tiff;
    std::string unit;                ///< of the spacing: "um", "angstrom"; empty where the file does not say
    std::string compression;         ///< that a TIFF file shall have, one of tiffCompressions; empty for none
    std::string done;                ///< to the image since it was read: "zel box-filter --kernel 9,9"; may be empty
    std::vector<std::string> notes;  ///< what a user of the file should know: how something odd in it was taken
};

/// What the file that is written does not hold of those that were read, for a message: "NSTART, 2 labels"; empty when
/// nothing is lost.
/// @param formatName  of the file that is written.
std::string lostDetails(const FileDetails& details, std::string_view formatName);

}  // namespace zel::tool
