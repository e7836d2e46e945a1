#pragma once

#include <cuda_runtime.h>

namespace zel::cuda {

/// The pixel that stands at position i of a line of n pixels which goes on behind both ends mirrored, the edge pixel
/// repeated: ... b a a b c c b ... The position may lie any number of lengths out.
/// @param n  at least 1.
__host__ __device__ __forceinline__ int mirrorIndex(int i, int n) {
    const unsigned int length = static_cast<unsigned int>(n);
    // Positions i and -1 - i show the same pixel.
    const unsigned int right = static_cast<unsigned int>(i < 0 ? ~i : i);
    if (right < length) return static_cast<int>(right);
    const unsigned int inPeriod = right % (2 * length);
    return static_cast<int>(inPeriod < length ? inPeriod : 2 * length - 1 - inPeriod);
}

}  // namespace zel::cuda
