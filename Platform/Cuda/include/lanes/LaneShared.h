#pragma once

// Apart from the words, for headers that declare kernels: sources without kernels include those too.
namespace zel::cuda {

template <class T>
using LaneShared = volatile T;

}  // namespace zel::cuda
