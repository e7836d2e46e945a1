#pragma once

#include <cstddef>

#include "Helper/raise.h"
#include "SourceName_CUDA.h"
#include "zel/ImageModel.h"

namespace zel::cuda {

/// Where a row of an image begins, along each of its five axes.
struct RowStart {
    std::size_t x;
    std::size_t y;
    std::size_t z;
    std::size_t i3;
    std::size_t i4;
};

/// @param action  "read" or "write".
[[noreturn]] inline void raiseRowFailure(const char* action, const ImageModel& image, const RowStart& row) {
    raise<RuntimeError>(utilitiesSource, __LINE__, "Cannot ", action, " a row at the coordinates (", row.x, ", ", row.y,
                        ", ", row.z, ", ", row.i3, ", ", row.i4, ") in the image (", image.getDimension(0), ", ",
                        image.getDimension(1), ", ", image.getDimension(2), ", ", image.getDimension(3), ", ",
                        image.getDimension(4), ")");
}

}  // namespace zel::cuda
