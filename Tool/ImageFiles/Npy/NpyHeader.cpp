#include "ImageFiles/Npy/NpyHeader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cstdint>
#include <functional>
#include <numeric>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/Npy/PythonLiterals.h"

namespace zel::tool {

namespace {

constexpr std::size_t maxAxisCount = 5;
constexpr char nativeOrder = std::endian::native == std::endian::little ? '<' : '>';

struct TypeCode {
    std::string_view code;
    VoxelTypes type;
};

// The first code of a type is the one to write: bools, read as bytes 0 and 1, come last.
constexpr TypeCode typeCodes[] = {
    {"u1", VoxelTypes::uint8},   {"u2", VoxelTypes::uint16},    {"u4", VoxelTypes::uint32},
    {"u8", VoxelTypes::uint64},  {"i1", VoxelTypes::int8},      {"i2", VoxelTypes::int16},
    {"i4", VoxelTypes::int32},   {"i8", VoxelTypes::int64},     {"f4", VoxelTypes::float32},
    {"f8", VoxelTypes::float64}, {"c8", VoxelTypes::complex64}, {"c16", VoxelTypes::complex128},
    {"b1", VoxelTypes::uint8},
};

/// A file's text as a message can show it: short, and without bytes that a terminal would obey.
std::string printable(std::string_view text) {
    constexpr std::size_t maxLength = 40;
    std::string result(text.substr(0, maxLength));
    std::ranges::replace_if(
        result, [](unsigned char letter) { return std::isprint(letter) == 0; }, '?');
    return result + (text.size() > maxLength ? "..." : "");
}

[[noreturn]] void refuseType(std::string_view descr, bool isHalf, const std::string& path) {
    std::string allowed = "bool";
    for (const VoxelTypes type : allVoxelTypes) allowed.append(", ").append(voxelTypeName(type));
    throw FileError::reading(path, "its element type is '" + printable(descr) + (isHalf ? "' (half precision)" : "'") +
                                       "; save it as one of " + allowed +
                                       (isHalf ? ", best with .astype('float32')" : ""));
}

/// @param descr  a byte order, which may be missing, and a type: "<f4".
void parseType(std::string_view descr, NpyHeader& header, const std::string& path) {
    const bool hasOrder = !descr.empty() && std::string_view("<>=|").find(descr.front()) != std::string_view::npos;
    const char order = hasOrder && descr.front() != '=' ? descr.front() : nativeOrder;
    const std::string_view code = hasOrder ? descr.substr(1) : descr;
    const auto* const entry = std::ranges::find(typeCodes, code, &TypeCode::code);
    if (entry == std::end(typeCodes)) refuseType(descr, code == "f2", path);
    header.type = entry->type;
    header.isByteSwapped = order != '|' && order != nativeOrder && helper::getSizeOf(header.type) > 1;
}

NpyHeader parseDictionary(std::string_view dictionary, const std::string& path) {
    NpyHeader header;
    PythonLiterals literals(dictionary, path);
    bool hasType = false, hasOrder = false, hasShape = false;
    literals.expect('{');
    while (!literals.accept('}')) {
        const std::string_view key = literals.quoted();
        literals.expect(':');
        if (key == "descr") {
            if (!literals.isAtQuoted()) {
                throw FileError::reading(path, "its elements are records; save one field of it as an array of its own");
            }
            parseType(literals.quoted(), header, path);
            hasType = true;
        } else if (key == "fortran_order") {
            header.isFortranOrder = literals.boolean();
            hasOrder = true;
        } else if (key == "shape") {
            header.shape = literals.tuple();
            hasShape = true;
        } else {
            literals.refuse();
        }
        if (literals.accept(',')) continue;
        literals.expect('}');
        break;
    }
    literals.expectEnd();
    if (!hasType || !hasOrder || !hasShape) literals.refuse();
    return header;
}

void checkShape(const NpyHeader& header, const std::string& path) {
    const auto& shape = header.shape;
    if (shape.empty()) throw FileError::reading(path, "it holds a single number, not an image");
    if (shape.size() > maxAxisCount) {
        throw FileError::reading(path, "it has " + std::to_string(shape.size()) + " axes; images have 1 to 5");
    }
    if (std::ranges::find(shape, 0U) != shape.end()) throw FileError::reading(path, "it is empty: an axis has size 0");
    if (!imageBytes(header.type, header.imageSize())) throw FileError::reading(path, "its size is too large");
}

}  // namespace

std::size_t NpyHeader::elementCount() const {
    return std::accumulate(shape.begin(), shape.end(), std::size_t{1}, std::multiplies<>());
}

ImageSize NpyHeader::imageSize() const {
    std::array<std::size_t, maxAxisCount> sizes{1, 1, 1, 1, 1};
    std::copy(shape.rbegin(), shape.rend(), sizes.begin());
    return {sizes[0], sizes[1], sizes[2], sizes[3], sizes[4]};
}

NpyHeader parseNpyHeader(std::string_view dictionary, const std::string& path) {
    NpyHeader header = parseDictionary(dictionary, path);
    checkShape(header, path);
    return header;
}

std::string makeNpyHeader(VoxelTypes type, const ImageSize& size, std::size_t minAxisCount) {
    std::vector<std::size_t> shape{size.i4, size.i3, size.z, size.y, size.x};
    const std::size_t least = minAxisCount == 0 ? 2 : minAxisCount;
    while (shape.size() > least && shape.front() == 1) shape.erase(shape.begin());

    const auto* const entry = std::ranges::find(typeCodes, type, &TypeCode::type);
    const char order = helper::getSizeOf(type) == 1 ? '|' : nativeOrder;
    std::string dictionary =
        "{'descr': '" + std::string(1, order) + std::string(entry->code) + "', 'fortran_order': False, 'shape': (";
    for (std::size_t i = 0; i < shape.size(); ++i) dictionary += (i > 0 ? ", " : "") + std::to_string(shape[i]);
    dictionary += shape.size() == 1 ? ",), }" : "), }";

    // The voxels begin at a multiple of 64 bytes, and a line end closes the header.
    constexpr std::size_t prefixSize = 10, alignment = 64;
    const std::size_t used = prefixSize + dictionary.size() + 1;
    dictionary.append((alignment - used % alignment) % alignment, ' ').push_back('\n');
    const auto length = static_cast<std::uint16_t>(dictionary.size());
    std::string header("\x93NUMPY\x01\x00", 8);
    header.push_back(static_cast<char>(length & 0xFFU));
    header.push_back(static_cast<char>(length >> 8U));
    return header + dictionary;
}

}  // namespace zel::tool
