#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "zel/HostImage.h"

namespace zel::tool {

/// "512 x 512", "64 x 64 x 32": at least two sizes, x first.
std::string toText(const ImageSize& size);
/// The same as a JSON array.
nlohmann::ordered_json sizeToJson(const ImageSize& size);

/// With three significant digits: "512 bytes", "1.5 GiB".
std::string bytesToText(std::uint64_t bytes);

/// With three significant digits: "0.0123".
std::string secondsToText(double seconds);

}  // namespace zel::tool
