#pragma once

#include <string>

#include "zel/HostImage.h"

namespace zel::bench {

/// The sizes that memory is measured on: one large slice and many.
inline constexpr ImageSize memorySizes[] = {{4096, 4096}, {256, 256, 256}};

inline double voxelCount(const ImageSize& size) {
    return static_cast<double>(size.x) * static_cast<double>(size.y) * static_cast<double>(size.z);
}

inline std::string sizeText(const ImageSize& size) {
    std::string text = std::to_string(size.x) + 'x' + std::to_string(size.y);
    if (size.z > 1) text += 'x' + std::to_string(size.z);
    return text;
}

}  // namespace zel::bench
