#include "ImageFiles/NpyHeader.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <functional>
#include <numeric>
#include <optional>

#include "ImageFiles/FileError.h"

namespace zel::tool {

namespace {

constexpr std::size_t maximalAxisCount = 5;

struct TypeCode {
    std::string_view code;
    VoxelTypes type;
};

// Bools come as bytes 0 and 1. They are last, since the first code of a type is the one to write.
constexpr TypeCode typeCodes[] = {
    {"u1", VoxelTypes::uint8},   {"u2", VoxelTypes::uint16},    {"u4", VoxelTypes::uint32},
    {"u8", VoxelTypes::uint64},  {"i1", VoxelTypes::int8},      {"i2", VoxelTypes::int16},
    {"i4", VoxelTypes::int32},   {"i8", VoxelTypes::int64},     {"f4", VoxelTypes::float32},
    {"f8", VoxelTypes::float64}, {"c8", VoxelTypes::complex64}, {"c16", VoxelTypes::complex128},
    {"b1", VoxelTypes::uint8},
};

/// What a message can have of a file's text: no bytes that a terminal obeys, and not too many.
std::string printable(std::string_view text) {
    constexpr std::size_t most = 40;
    std::string result(text.substr(0, most));
    std::ranges::replace_if(
        result, [](unsigned char letter) { return std::isprint(letter) == 0; }, '?');
    return result + (text.size() > most ? "..." : "");
}

constexpr char nativeOrder = std::endian::native == std::endian::little ? '<' : '>';

/// Reads the few Python literals that NPY headers are made of.
class HeaderParser {
public:
    HeaderParser(std::string_view text, const std::string& path) : text_(text), path_(path) {}

    NpyHeader parse() {
        NpyHeader header;
        bool hasType = false, hasOrder = false, hasShape = false;
        expect('{');
        while (!accept('}')) {
            const std::string_view key = quoted();
            expect(':');
            if (key == "descr") {
                parseType(header);
                hasType = true;
            } else if (key == "fortran_order") {
                header.isFortranOrder = boolean();
                hasOrder = true;
            } else if (key == "shape") {
                header.shape = tuple();
                hasShape = true;
            } else {
                damaged();
            }
            if (!accept(',')) {
                expect('}');
                break;
            }
        }
        skipSpace();
        if (!text_.empty() || !hasType || !hasOrder || !hasShape) damaged();
        return header;
    }

private:
    [[noreturn]] void damaged() const { throw FileError::reading(path_, "its NPY header is damaged"); }

    void skipSpace() {
        while (!text_.empty() && std::isspace(static_cast<unsigned char>(text_.front())) != 0) text_.remove_prefix(1);
    }
    bool accept(char wanted) {
        skipSpace();
        if (text_.empty() || text_.front() != wanted) return false;
        text_.remove_prefix(1);
        return true;
    }
    void expect(char wanted) {
        if (!accept(wanted)) damaged();
    }

    std::string_view quoted() {
        const char quote = accept('\'') ? '\'' : '"';
        if (quote == '"') expect('"');
        const std::size_t end = text_.find(quote);
        if (end == std::string_view::npos) damaged();
        const std::string_view content = text_.substr(0, end);
        text_.remove_prefix(end + 1);
        return content;
    }

    bool boolean() {
        skipSpace();
        for (const std::string_view word : {std::string_view("True"), std::string_view("False")}) {
            if (!text_.starts_with(word)) continue;
            text_.remove_prefix(word.size());
            return word == "True";
        }
        damaged();
    }

    std::vector<std::size_t> tuple() {
        std::vector<std::size_t> numbers;
        expect('(');
        while (!accept(')')) {
            numbers.push_back(number());
            if (accept(',')) continue;
            expect(')');
            break;
        }
        return numbers;
    }

    std::size_t number() {
        skipSpace();
        std::size_t value = 0;
        const auto [end, status] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
        if (status == std::errc::result_out_of_range) throw FileError::reading(path_, "its size is too large");
        if (status != std::errc()) damaged();
        text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
        accept('L');  // Python 2 wrote long integers like this
        return value;
    }

    void parseType(NpyHeader& header) {
        skipSpace();
        if (!text_.starts_with('\'') && !text_.starts_with('"')) {
            throw FileError::reading(path_, "its elements are records; save one field of it as an array of its own");
        }
        const std::string_view descr = quoted();
        const bool hasOrder = !descr.empty() && std::string_view("<>=|").find(descr.front()) != std::string_view::npos;
        const char order = hasOrder && descr.front() != '=' ? descr.front() : nativeOrder;
        const std::string_view code = hasOrder ? descr.substr(1) : descr;
        const auto* const entry = std::ranges::find(typeCodes, code, &TypeCode::code);
        if (entry == std::end(typeCodes)) refuseType(descr, code);
        header.type = entry->type;
        header.isByteSwapped = order != '|' && order != nativeOrder && helper::getSizeOf(header.type) > 1;
    }

    [[noreturn]] void refuseType(std::string_view descr, std::string_view code) const {
        std::string allowed;
        for (const VoxelTypes type : allVoxelTypes)
            allowed.append(allowed.empty() ? "" : ", ").append(voxelTypeName(type));
        throw FileError::reading(path_, "its element type is '" + printable(descr) +
                                            (code == "f2" ? "' (half precision)" : "'") + "; save it as one of bool, " +
                                            allowed + (code == "f2" ? ", best with .astype('float32')" : ""));
    }

    std::string_view text_;
    const std::string& path_;
};

void checkShape(const NpyHeader& header, const std::string& path) {
    const auto& shape = header.shape;
    if (shape.empty()) throw FileError::reading(path, "it holds a single number, not an image");
    if (shape.size() > maximalAxisCount) {
        throw FileError::reading(path, "it has " + std::to_string(shape.size()) + " axes; images have 1 to 5");
    }
    if (std::ranges::find(shape, 0U) != shape.end()) throw FileError::reading(path, "it is empty: an axis has size 0");
    std::size_t bytes = helper::getSizeOf(header.type);
    for (const std::size_t size : shape) {
        if (__builtin_mul_overflow(bytes, size, &bytes) || bytes > SIZE_MAX / 2) {
            throw FileError::reading(path, "its size is too large");
        }
    }
}

}  // namespace

std::size_t NpyHeader::elementCount() const {
    return std::accumulate(shape.begin(), shape.end(), std::size_t{1}, std::multiplies<>());
}

NpyHeader parseNpyHeader(std::string_view dictionary, const std::string& path) {
    NpyHeader header = HeaderParser(dictionary, path).parse();
    checkShape(header, path);
    return header;
}

std::string makeNpyHeader(VoxelTypes type, const ImageSize& size) {
    std::vector<std::size_t> shape{size.i4, size.i3, size.z, size.y, size.x};
    while (shape.size() > 2 && shape.front() == 1) shape.erase(shape.begin());

    const auto* const entry = std::ranges::find(typeCodes, type, &TypeCode::type);
    const char order = helper::getSizeOf(type) == 1 ? '|' : nativeOrder;
    std::string dictionary =
        "{'descr': '" + std::string(1, order) + std::string(entry->code) + "', 'fortran_order': False, 'shape': (";
    for (std::size_t i = 0; i < shape.size(); ++i) dictionary += (i > 0 ? ", " : "") + std::to_string(shape[i]);
    dictionary += "), }";

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
