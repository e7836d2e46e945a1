#include "ImageFiles/ImageFile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <new>
#include <vector>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/Mrc/MrcFile.h"
#include "ImageFiles/Npy/NpyFile.h"
#include "ImageFiles/Png/PngFile.h"
#include "ImageFiles/Tiff/TiffFile.h"
#include "zel/Exceptions.h"

namespace zel::tool {

namespace {

// A new format needs a folder of its own and a line here.
std::array<const ImageFormat*, 4> formats() {
    return {&npyFormat(), &pngFormat(), &tiffFormat(), &mrcFormat()};
}

std::string lowerCaseExtension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& letter : extension) letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return extension;
}

/// Null when no format has the extension.
const ImageFormat* findFormat(const std::string& path) {
    const std::string extension = lowerCaseExtension(path);
    for (const ImageFormat* const format : formats()) {
        const auto known = format->extensions();
        if (std::ranges::find(known, extension) != known.end()) return format;
    }
    return nullptr;
}

constexpr const char* noJpeg = "JPEG changes values, so it is not used here; save the image as .png (grey) or .tif";

bool isJpegName(const std::string& path) {
    const std::string extension = lowerCaseExtension(path);
    return extension == ".jpg" || extension == ".jpeg";
}

/// By the name, else by the content.
const ImageFormat& formatOf(InputFile& file) {
    if (const ImageFormat* const named = findFormat(file.path())) return *named;
    const std::string start = file.peek(contentLength);
    std::string names;
    for (const ImageFormat* const format : formats()) {
        if (format->matches(start)) return *format;
        names.append(names.empty() ? "" : ", ").append(format->name());
    }
    if (isJpegName(file.path()) || start.starts_with("\xFF\xD8\xFF")) throw FileError::reading(file.path(), noJpeg);
    throw FileError::reading(file.path(), "by its content it is none of " + names);
}

const ImageFormat& formatForWriting(const std::string& path) {
    if (path == "-") return npyFormat();
    if (const ImageFormat* const format = findFormat(path)) return *format;
    if (isJpegName(path)) throw FileError::writing(path, noJpeg);
    throw FileError::writing(path, "the name has to end in " + imageFileExtensions());
}

}  // namespace

std::string outputFormatName(const std::string& path) {
    return std::string(formatForWriting(path).name());
}

std::string imageFileExtensions() {
    std::vector<std::string_view> all;
    for (const ImageFormat* const format : formats()) std::ranges::copy(format->extensions(), std::back_inserter(all));
    std::string list;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (i > 0) list += i + 1 == all.size() ? " or " : ", ";
        list += all[i];
    }
    return list;
}

HostImage readImageFile(const std::string& path) {
    FileDetails unused;
    return readImageFile(path, unused);
}

HostImage readImageFile(const std::string& path, FileDetails& details, const Progress& progress) {
    InputFile file(path, progress);
    const ImageFormat& format = formatOf(file);
    try {
        HostImage image = format.read(file, details);
        details.format = format.name();
        for (int axis = 0; axis < 3; ++axis) details.hasSpacing |= image.getSpacing(axis) != 1;
        return image;
    } catch (const RuntimeError& error) {  // HostImage could not be made
        throw FileError::reading(path, error.what());
    } catch (const std::bad_alloc&) {
        throw FileError::reading(path, "there is not enough memory for it");
    }
}

void checkWritable(const std::string& path) {
    formatForWriting(path);
    AtomicFile::checkWritable(path);
}

void checkWritable(const std::string& path, VoxelTypes type, const ImageSize& size) {
    checkWritable(path);
    const std::string obstacle = formatForWriting(path).whyNotWritable(type, size);
    if (!obstacle.empty()) throw FileError::writing(path, obstacle);
}

void writeImageFile(const std::string& path, const ImageModel& image, const FileDetails& details,
                    const Progress& progress) {
    checkWritable(path, image.getDataType(), imageSizeOf(image));
    AtomicFile file(path);
    formatForWriting(path).write(file, image, details, progress);
    file.commit();
}

}  // namespace zel::tool
