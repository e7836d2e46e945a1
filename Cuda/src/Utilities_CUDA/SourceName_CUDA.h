#pragma once

namespace zel::cuda {

/// The source that failures of this folder's operations are reported from.
inline constexpr const char* utilitiesSource = "Cuda/src/Utilities_CUDA";

}  // namespace zel::cuda
