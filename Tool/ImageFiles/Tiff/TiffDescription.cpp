#include "ImageFiles/Tiff/TiffDescription.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <vector>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/NumberText.h"
#include "ImageFiles/Tiff/OmeXml.h"

namespace zel::tool {

namespace {

constexpr std::string_view imageJOrder = "CZT";

std::string_view descriptionOf(const TiffHandle& handle) {
    const char* description = nullptr;
    TIFFGetField(handle.get(), TIFFTAG_IMAGEDESCRIPTION, &description);
    return description == nullptr ? "" : description;
}

/// The lines "key=value" of a description.
struct Line {
    std::string_view key;
    std::string_view value;
};
std::vector<Line> linesOf(std::string_view text) {
    std::vector<Line> lines;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (line.ends_with('\r')) line.remove_suffix(1);
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos) lines.push_back({line.substr(0, equals), line.substr(equals + 1)});
    }
    return lines;
}

/// A size of voxels; nothing where the text is not one.
std::optional<double> parseSize(std::string_view text) {
    double size = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), size);
    if (status != std::errc() || end != text.data() + text.size() || !std::isfinite(size) || size <= 0) return {};
    return size;
}

/// Three sizes with commas and nothing else: other programs write lines with the same key and one number.
bool parseSpacing(std::string_view text, std::array<double, 3>& spacing) {
    std::array<double, 3> found{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::size_t comma = text.find(',');
        if ((comma == std::string_view::npos) != (axis == 2)) return false;
        const auto size = parseSize(text.substr(0, comma));
        if (!size) return false;
        found[axis] = *size;
        text.remove_prefix(axis == 2 ? text.size() : comma + 1);
    }
    spacing = found;
    return true;
}

/// In ASCII, as all readers understand it.
std::string plainUnit(std::string_view unit) {
    for (const std::string_view micro : {"\\u00B5m", "\xC2\xB5m", "\xCE\xBCm", "\xB5m"}) {
        if (unit == micro) return "um";
    }
    return std::string(unit);
}

class DescriptionReader {
public:
    DescriptionReader(const TiffHandle& handle, std::size_t pageCount, const std::string& path)
        : handle_(handle), text_(descriptionOf(handle)), pageCount_(pageCount), path_(path) {
        axes_.slices = pageCount;
    }

    TiffAxes read() {
        if (isOmeXml(text_)) {
            readOme();
        } else if (text_.starts_with("{\"shape\": ")) {
            readResolution(false);
            readShape();
        } else if (text_.starts_with("ImageJ=")) {
            constexpr std::uint32_t imageJTag = 50839;
            std::uint32_t count = 0;
            const void* bytes = nullptr;
            axes_.details.hasImageJTag = TIFFGetField(handle_.get(), imageJTag, &count, &bytes) == 1;
            readResolution(true);
            readImageJ();
        } else {
            readResolution(false);
        }
        for (const Line& line : linesOf(text_)) {
            if (line.key == "spacing" && parseSpacing(line.value, axes_.spacing)) break;
        }
        return axes_;
    }

private:
    void readImageJ() {
        std::size_t images = 0, slices = 0;
        for (const auto& [key, value] : linesOf(text_)) {
            if (key == "images")
                images = countIn(value);
            else if (key == "channels")
                axes_.channels = std::max<std::size_t>(countIn(value), 1);
            else if (key == "slices")
                slices = countIn(value);
            else if (key == "frames")
                axes_.frames = std::max<std::size_t>(countIn(value), 1);
            else if (key == "spacing")
                axes_.spacing[2] = parseSize(value).value_or(axes_.spacing[2]);
            else if (key == "unit")
                axes_.unit = plainUnit(value);
            else if (key != "ImageJ" && key != "hyperstack") {
                axes_.details.imageJLines.append(key).append("=").append(value).append("\n");
            }
        }
        if (images > pageCount_) refuseMoreImages();
        const std::size_t others = axes_.channels * axes_.frames;
        if (others == 1) return;
        axes_.slices = slices != 0 ? slices : pageCount_ / others;
        checkPages("ImageJ");
    }

    /// What Python programs write: the shape of a NumPy array, its slowest axis first, and perhaps its axes' letters.
    void readShape() {
        const auto json = nlohmann::json::parse(text_, nullptr, false);
        if (!json.is_object() || !json["shape"].is_array()) return;
        if (json.value("truncated", nlohmann::json()) == true) refuseMoreImages();
        std::vector<std::size_t> counts;  // of the axes over the pages, the fastest first
        for (const auto& count : json["shape"]) {
            if (!count.is_number_unsigned() || count == 0) return;
            counts.insert(counts.begin(), std::min<std::size_t>(count.get<std::size_t>(), UINT32_MAX));
        }
        constexpr std::size_t planeAxes = 2, maxAxes = 5;
        if (counts.size() <= planeAxes || counts.size() > maxAxes) return;
        counts.erase(counts.begin(), counts.begin() + planeAxes);
        const std::string order = pageOrderOf(json.value("axes", nlohmann::json()), counts.size());
        TiffAxes found = axes_;
        found.slices = found.channels = found.frames = 1;
        for (std::size_t i = 0; i < counts.size(); ++i) {
            (order[i] == 'Z' ? found.slices : order[i] == 'C' ? found.channels : found.frames) = counts[i];
        }
        if (found.slices * found.channels > pageCount_ || found.slices * found.channels * found.frames != pageCount_) {
            return;  // not of this file
        }
        axes_ = found;
        axes_.details.pageOrder = order;
    }

    /// The letters, the fastest axis first, without those of the plane; those of a NumPy array where they are others.
    static std::string pageOrderOf(const nlohmann::json& axes, std::size_t count) {
        const std::string usual = std::string("ZCT").substr(0, count);
        std::string letters = axes.is_string() ? axes.get<std::string>() : "";
        if (letters.size() != count + 2 || !letters.ends_with("YX")) return usual;
        letters.resize(count);
        std::ranges::reverse(letters);
        const bool isKnown = std::ranges::all_of(letters, [&](char letter) {
            return std::string_view("ZCT").find(letter) != std::string_view::npos &&
                   std::ranges::count(letters, letter) == 1;
        });
        return isKnown ? letters : usual;
    }

    void readOme() {
        std::size_t position = 0;
        const std::string_view pixels = nextOmeTag(text_, "Pixels", position);
        if (std::size_t next = position; !nextOmeTag(text_, "Pixels", next).empty()) {
            refuse("its OME description tells of several images; files of one can be read");
        }
        axes_.slices = omeNumber(pixels, "SizeZ", 1);
        axes_.channels = omeNumber(pixels, "SizeC", 1);
        axes_.frames = omeNumber(pixels, "SizeT", 1);
        checkPages("OME");
        readOmeOrder(pixels, position);
        const std::array<std::string, 3> keys{"PhysicalSizeX", "PhysicalSizeY", "PhysicalSizeZ"};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            axes_.spacing[axis] = parseSize(omeAttribute(pixels, keys[axis])).value_or(1);
        }
        const std::string_view unit = omeAttribute(pixels, keys[0] + "Unit");
        if (!omeAttribute(pixels, keys[0]).empty()) axes_.unit = unit.empty() ? "um" : plainUnit(unit);
        axes_.details.omeXml = text_;
    }

    void readOmeOrder(std::string_view pixels, std::size_t position) {
        const std::string_view order = omeAttribute(pixels, "DimensionOrder");
        std::string sorted(order);
        std::ranges::sort(sorted);
        if (sorted != "CTXYZ" || !order.starts_with("XY")) {
            refuse("its OME description has the DimensionOrder '" + std::string(order.substr(0, 8)) +
                   "'; XY and then C, Z and T in any order can be read");
        }
        axes_.details.pageOrder = order.substr(2);
        const ImageSize size{1, 1, axes_.slices, axes_.channels, axes_.frames};
        for (std::string_view tag; !(tag = nextOmeTag(text_, "TiffData", position)).empty();) {
            const RowIndex plane = planeOfPage(omeNumber(tag, "IFD", 0), size, axes_.details.pageOrder);
            if (plane.z == omeNumber(tag, "FirstZ", 0) && plane.i3 == omeNumber(tag, "FirstC", 0) &&
                plane.i4 == omeNumber(tag, "FirstT", 0)) {
                continue;
            }
            refuse("its OME description puts its pages in another order than its DimensionOrder " + std::string(order));
        }
    }

    /// @param isImageJ  whose unit is in the description. Others count in inches or centimetres; 72 an inch is what
    ///                  programs write that do not know.
    void readResolution(bool isImageJ) {
        constexpr float unknown = 72;
        std::uint16_t unit = RESUNIT_NONE;
        float x = 0, y = 0;
        if (TIFFGetField(handle_.get(), TIFFTAG_XRESOLUTION, &x) != 1) return;
        if (TIFFGetField(handle_.get(), TIFFTAG_YRESOLUTION, &y) != 1) return;
        TIFFGetFieldDefaulted(handle_.get(), TIFFTAG_RESOLUTIONUNIT, &unit);
        const bool isInch = unit == RESUNIT_INCH, isCentimetre = unit == RESUNIT_CENTIMETER;
        if (!isImageJ && ((!isInch && !isCentimetre) || (isInch && x == unknown))) return;
        if (!std::isnormal(x) || !std::isnormal(y) || x <= 0 || y <= 0) return;
        axes_.spacing = {1.0 / x, 1.0 / y, 1};
        axes_.unit = isInch ? "inch" : isCentimetre ? "cm" : "";
    }

    void checkPages(const std::string& program) const {
        const auto [slices, channels, frames, spacing, unit, details] = axes_;
        if (slices > 0 && pageCount_ % slices == 0 && channels > 0 && pageCount_ / slices % channels == 0 &&
            pageCount_ / slices / channels == frames) {
            return;
        }
        refuse("its " + program + " description tells of " + std::to_string(channels) + " channels, " +
               std::to_string(slices) + " slices and " + std::to_string(frames) + " time points, but it has " +
               std::to_string(pageCount_) + (pageCount_ == 1 ? " page" : " pages"));
    }

    static std::size_t countIn(std::string_view text) {
        std::size_t count = 0;
        std::from_chars(text.data(), text.data() + text.size(), count);
        return std::min<std::size_t>(count, UINT32_MAX);
    }

    /// Some programs write only one page for a large volume and let the other slices' voxels follow it.
    [[noreturn]] void refuseMoreImages() const {
        refuse(
            "its description tells of more images than it has pages; volumes with a page for each slice can be "
            "read");
    }
    [[noreturn]] void refuse(const std::string& why) const { throw FileError::reading(path_, why); }

    const TiffHandle& handle_;
    std::string_view text_;
    std::size_t pageCount_;
    const std::string& path_;
    TiffAxes axes_;
};

/// Whether the image still has the axes that the description of its OME file tells, and a type that OME knows.
bool fitsOme(const ImageModel& image, const FileDetails& details) {
    if (details.tiff.omeXml.empty() || omeTypeName(image.getDataType()).empty()) return false;
    std::size_t position = 0;
    const std::string_view pixels = nextOmeTag(details.tiff.omeXml, "Pixels", position);
    const ImageSize size = imageSizeOf(image);
    return omeNumber(pixels, "SizeX", 0) == size.x && omeNumber(pixels, "SizeY", 0) == size.y &&
           omeNumber(pixels, "SizeZ", 0) == size.z && omeNumber(pixels, "SizeC", 0) == size.i3 &&
           omeNumber(pixels, "SizeT", 0) == size.i4;
}

}  // namespace

TiffAxes tiffAxesOf(const TiffHandle& handle, std::size_t pageCount, const std::string& path) {
    return DescriptionReader(handle, pageCount, path).read();
}

RowIndex planeOfPage(std::size_t page, const ImageSize& size, std::string_view order) {
    RowIndex plane;
    for (const char axis : order) {
        const std::size_t count = axis == 'Z' ? size.z : axis == 'C' ? size.i3 : size.i4;
        (axis == 'Z' ? plane.z : axis == 'C' ? plane.i3 : plane.i4) = page % count;
        page /= count;
    }
    return plane;
}

std::string tiffPageOrder(const ImageModel& image, const FileDetails& details) {
    return fitsOme(image, details) ? details.tiff.pageOrder : std::string(imageJOrder);
}

std::string makeTiffDescription(const ImageModel& image, const FileDetails& details) {
    if (fitsOme(image, details)) return omeXmlWithType(details.tiff.omeXml, image.getDataType());
    const ImageSize size = imageSizeOf(image);
    const std::string z = numberToText(image.getSpacing(2));
    // ImageJ takes the last spacing, which is that along z.
    std::string text = "ImageJ=1.54f\nspacing=" + numberToText(image.getSpacing(0)) + "," +
                       numberToText(image.getSpacing(1)) + "," + z + "\n" +
                       "images=" + std::to_string(size.z * size.i3 * size.i4) + "\n";
    if (size.i3 > 1) text += "channels=" + std::to_string(size.i3) + "\n";
    if (size.z > 1) text += "slices=" + std::to_string(size.z) + "\n";
    if (size.i4 > 1) text += "frames=" + std::to_string(size.i4) + "\n";
    if (size.i3 * size.i4 > 1) text += "hyperstack=true\n";
    if (details.tiff.imageJLines.empty()) text += "mode=grayscale\n";
    text += details.tiff.imageJLines;
    if (!details.unit.empty()) text += "unit=" + details.unit + "\n";
    return text + "spacing=" + z + "\n";
}

}  // namespace zel::tool
