#pragma once

#include <nppdefs.h>

#include <cstddef>

#include "zel/Vector.h"

namespace zel::cuda {

inline NppiSize nppSize(const Vector3<unsigned>& size) {
    return {static_cast<int>(size.x), static_cast<int>(size.y)};
}

/// A row pitch as NPP's 32-bit step. @throws RuntimeError when it does not fit.
int nppStep(std::size_t pitch);

}  // namespace zel::cuda
