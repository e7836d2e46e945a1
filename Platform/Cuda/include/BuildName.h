#pragma once

namespace zel {

/// What this build runs on, for its users, and what to do where it finds no device.
inline constexpr const char* buildName = "CUDA build (runs on a GPU)";
inline constexpr const char* withoutDevice = "the host build of zel runs on the CPU, without a GPU";

}  // namespace zel
