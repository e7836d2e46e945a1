#include "ImageFiles/Tiff/OmeXml.h"

#include <algorithm>
#include <bit>
#include <charconv>

namespace zel::tool {

namespace {

void setAttribute(std::string& xml, std::string_view name, std::string_view value) {
    std::size_t position = 0;
    const std::string_view old = omeAttribute(nextOmeTag(xml, "Pixels", position), name);
    if (!old.empty()) xml.replace(static_cast<std::size_t>(old.data() - xml.data()), old.size(), value);
}

/// UUIDs are those of the file that was read, whose name is beside them: readers would look there for the voxels.
void removeUuids(std::string& xml) {
    std::string kept;
    std::size_t position = 0, end = 0;
    while (!nextOmeTag(xml, "UUID", position).empty()) {
        kept.append(xml, end, xml.rfind('<', position - 1) - end);
        if (xml[position - 2] != '/') position = std::min(xml.find('>', xml.find("</", position)), xml.size() - 1) + 1;
        end = position;
    }
    kept.append(xml, end);
    xml = kept;
    constexpr std::string_view name = " UUID=";
    position = 0;
    const std::string_view value = omeAttribute(nextOmeTag(xml, "OME", position), name.substr(1, 4));
    if (value.empty()) return;
    const auto begin = static_cast<std::size_t>(value.data() - xml.data()) - name.size() - 1;
    xml.erase(begin, name.size() + value.size() + 2);
}

}  // namespace

bool isOmeXml(std::string_view description) {
    std::size_t position = 0;
    return description.find("OME>") != std::string_view::npos && !nextOmeTag(description, "Pixels", position).empty();
}

std::string_view nextOmeTag(std::string_view xml, std::string_view name, std::size_t& position) {
    for (std::size_t found; (found = xml.find(name, position)) != std::string_view::npos;) {
        position = found + name.size();
        const bool isStart = found > 0 && (xml[found - 1] == '<' || xml[found - 1] == ':');
        if (!isStart || std::string_view(" \t\r\n/>").find(xml.substr(position, 1)) == std::string_view::npos) continue;
        const std::size_t open = xml.rfind('<', found), end = xml.find('>', position);
        if (open == std::string_view::npos || end == std::string_view::npos) return {};
        if (xml.substr(open, 2) == "</") continue;
        position = end + 1;
        return xml.substr(found, end - found);
    }
    return {};
}

std::string_view omeAttribute(std::string_view tag, std::string_view name) {
    for (std::size_t found = 0; (found = tag.find(name, found + 1)) != std::string_view::npos;) {
        const std::string_view rest = tag.substr(found + name.size());
        if (tag[found - 1] > ' ' || rest.size() < 2 || rest[0] != '=' || (rest[1] != '"' && rest[1] != '\'')) continue;
        return rest.substr(2, rest.find(rest[1], 2) - 2);
    }
    return {};
}

std::size_t omeNumber(std::string_view tag, std::string_view name, std::size_t ifMissing) {
    const std::string_view text = omeAttribute(tag, name);
    std::size_t number = ifMissing;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string_view omeTypeName(VoxelTypes type) {
    if (type == VoxelTypes::float32) return "float";
    if (type == VoxelTypes::float64) return "double";
    return isComplex(type) || helper::getSizeOf(type) > 4 ? "" : voxelTypeName(type);
}

std::string omeXmlWithType(const std::string& xml, VoxelTypes type) {
    std::string result = xml;
    std::size_t position = 0;
    const bool isSame = omeAttribute(nextOmeTag(xml, "Pixels", position), "Type") == omeTypeName(type);
    setAttribute(result, "Type", omeTypeName(type));
    if (!isSame) setAttribute(result, "SignificantBits", std::to_string(8 * helper::getSizeOf(type)));
    setAttribute(result, "BigEndian", std::endian::native == std::endian::big ? "true" : "false");
    removeUuids(result);
    return result;
}

}  // namespace zel::tool
