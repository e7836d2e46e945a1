#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "zel/HostImage.h"

namespace zel::tool {

/// "512 x 512", "64 x 64 x 32": sizes from x on, at least two.
std::string toText(const ImageSize& size);
/// The same as a JSON array.
nlohmann::ordered_json sizeToJson(const ImageSize& size);

/// Three digits that matter: "0.0123".
std::string secondsToText(double seconds);

}  // namespace zel::tool
