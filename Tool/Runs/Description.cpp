#include "Runs/Description.h"

#include <array>
#include <cstdio>
#include <vector>

namespace zel::tool {

namespace {

std::vector<std::size_t> sizesOf(const ImageSize& size) {
    std::vector<std::size_t> sizes{size.x, size.y, size.z, size.i3, size.i4};
    while (sizes.size() > 2 && sizes.back() == 1) sizes.pop_back();
    return sizes;
}

}  // namespace

std::string toText(const ImageSize& size) {
    std::string text;
    for (const std::size_t count : sizesOf(size)) text += (text.empty() ? "" : " x ") + std::to_string(count);
    return text;
}

nlohmann::ordered_json sizeToJson(const ImageSize& size) {
    return sizesOf(size);
}

std::string secondsToText(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g", seconds);
    return text.data();
}

}  // namespace zel::tool
