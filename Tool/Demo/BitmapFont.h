#pragma once

#include <string_view>

#include "zel/HostImage.h"

namespace zel::tool {

/// Pixels from one character to the next, and from one line to the next, at scale 1.
inline constexpr std::size_t characterWidth = 6;
inline constexpr std::size_t characterHeight = 8;

/// Draws printable ASCII text into a uint8 picture, clipped at its edges. Any other character is drawn as a question
/// mark.
/// @param left, top  of the first character's cell.
/// @param scale      pixels of the picture for one of the font.
/// @param value      of the pixels that are set; the others stay as they are.
void drawText(HostImage& picture, std::string_view text, std::size_t left, std::size_t top, std::size_t scale,
              unsigned char value);

}  // namespace zel::tool
