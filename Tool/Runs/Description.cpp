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

std::string bytesToText(std::uint64_t bytes) {
    constexpr std::array units{"bytes", "KiB", "MiB", "GiB", "TiB"};
    auto amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (amount >= 1000 && unit + 1 < units.size()) {
        amount /= 1024;
        ++unit;
    }
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%.3g %s", amount, units.at(unit));
    return text.data();
}

std::string secondsToText(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g", seconds);
    return text.data();
}

}  // namespace zel::tool
