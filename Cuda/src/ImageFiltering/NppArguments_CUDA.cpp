#include "NppArguments_CUDA.h"

#include <limits>

#include "Helper/raise.h"

namespace zel::cuda {

int nppStep(std::size_t pitch) {
    constexpr int maxStep = std::numeric_limits<int>::max();
    if (pitch > static_cast<std::size_t>(maxStep)) {
        raise<RuntimeError>("Cuda/src/ImageFiltering/NppArguments_CUDA", __LINE__, "rows of ", pitch,
                            " bytes are too long for NPP, which takes at most ", maxStep, "; use tiles");
    }
    return static_cast<int>(pitch);
}

}  // namespace zel::cuda
