#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ImageFiles/Common/AtomicFile.h"
#include "ImageFiles/Common/FileDetails.h"
#include "ImageFiles/Common/InputFile.h"
#include "ImageFiles/Common/Progress.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// How much of a file tells its format.
inline constexpr std::size_t contentLength = 256;

/// A format of image files.
class ImageFormat {
public:
    virtual ~ImageFormat() = default;

    virtual std::string_view name() const = 0;
    /// In lower case, with the dot; the usual one first.
    virtual std::vector<std::string_view> extensions() const = 0;
    /// Whether a file that begins like this, with at most contentLength bytes, is of the format.
    virtual bool matches(std::string_view start) const = 0;
    /// @throws FileError when the file is of another format, is damaged, or holds what HostImage cannot hold.
    /// @param details  gets what the format says besides the image.
    virtual HostImage read(InputFile& file, FileDetails& details) const = 0;
    /// Why the format cannot hold an image of that type and size, and what to do about it; empty when it can.
    virtual std::string whyNotWritable(VoxelTypes type, const ImageSize& size) const = 0;
    /// Writes an image that the format can hold, with those of the details that it has a place for.
    virtual void write(AtomicFile& file, const ImageModel& image, const FileDetails& details,
                       const Progress& progress) const = 0;
};

}  // namespace zel::tool
