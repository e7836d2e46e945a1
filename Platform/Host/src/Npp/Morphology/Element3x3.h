#pragma once

namespace zel::host {

/// An element of radius 1: 3 by 3 pixels, or a pixel and its four neighbours.
enum class Element3x3 { square, cross };

}  // namespace zel::host
