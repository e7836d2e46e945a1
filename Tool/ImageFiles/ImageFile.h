#pragma once

#include <string>

#include "zel/HostImage.h"

namespace zel::tool {

/// The name of the format that goes with the file's extension: "NPY", "PNG".
/// @throws FileError when there is none.
std::string imageFormatName(const std::string& path);

/// The extensions of all formats, ready for a sentence: ".npy, .png or .tif".
std::string imageFileExtensions();

/// Reads a whole image file; the extension decides on its format.
/// @throws FileError, and Interrupted after a signal.
HostImage readImageFile(const std::string& path);

/// Raises the errors that writing such an image would meet, before the work of making it.
void checkWritable(const std::string& path, VoxelTypes type, const ImageSize& size);
/// The same as far as the name alone can tell.
void checkWritable(const std::string& path);

/// Writes an image file, which appears under its name only when it is whole.
/// @throws FileError, and Interrupted after a signal. What the file was before stays then.
void writeImageFile(const std::string& path, const ImageModel& image);

}  // namespace zel::tool
