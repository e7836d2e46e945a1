#pragma once

#include <nppi_morphological_operations.h>

#include <array>
#include <type_traits>
#include <utility>

namespace zel::test {

#define ZEL_ERODE_DILATE(kind, suffix)                                              \
    std::array {                                                                    \
        nppiErode##kind##_##suffix##_C1R_Ctx, nppiDilate##kind##_##suffix##_C1R_Ctx \
    }
#define ZEL_FUNCTIONS(suffix) std::pair(ZEL_ERODE_DILATE(3x3Border, suffix), ZEL_ERODE_DILATE(Border, suffix))

/// Erosion and dilation of a type, by the square of 3 by 3 and by a mask.
template <typename T>
constexpr auto morphologyFunctions() {
    if constexpr (std::is_same_v<T, Npp8u>) return ZEL_FUNCTIONS(8u);
    if constexpr (std::is_same_v<T, Npp16u>) return ZEL_FUNCTIONS(16u);
    if constexpr (std::is_same_v<T, Npp32f>) return ZEL_FUNCTIONS(32f);
}

#undef ZEL_FUNCTIONS
#undef ZEL_ERODE_DILATE

}  // namespace zel::test
