#pragma once

// Apart from the words, for headers that declare kernels: sources without kernels include those too.
namespace zel::cuda {

/// Memory that lanes of a block, or blocks of a launch, exchange values through.
template <class T>
using LaneShared = T;

}  // namespace zel::cuda
