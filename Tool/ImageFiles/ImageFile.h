#pragma once

#include <string>

#include "ImageFiles/Common/FileDetails.h"
#include "ImageFiles/Common/Progress.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// The name of the format in which a file of that name is written: "NPY", "PNG".
/// @throws FileError when no format has the name's extension.
std::string outputFormatName(const std::string& path);

/// The extensions of all formats, as text: ".npy, .png or .tif".
std::string imageFileExtensions();

/// Reads an image file. Its extension tells its format, else its content does.
/// @param path  "-" for standard input.
/// @throws FileError, and Interrupted after a signal.
HostImage readImageFile(const std::string& path);
/// @param details  gets what the file says besides the image.
HostImage readImageFile(const std::string& path, FileDetails& details, const Progress& progress = {});

/// Raises the errors that writing such an image would meet, before the work of making it.
void checkWritable(const std::string& path, VoxelTypes type, const ImageSize& size);
/// The same for errors that depend on the name alone.
void checkWritable(const std::string& path);

/// Writes an image file, which appears under its name only when it is complete.
/// @param path     "-" for standard output, in NPY.
/// @param details  of the file that the image comes from.
/// @throws FileError, and Interrupted after a signal; an earlier file of that name then stays unchanged.
void writeImageFile(const std::string& path, const ImageModel& image, const FileDetails& details = {},
                    const Progress& progress = {});

}  // namespace zel::tool
