#pragma once

struct CUstream_st;

namespace zel {

/// Where the caller wants a run to happen. Everything here stays the caller's. Filters do not switch devices: to use
/// another GPU, make it the calling thread's current device as well.
class CudaContext {
public:
    /// The GPU; a negative or too large number stands for the calling thread's current one.
    /// CudaGaussianFilter3d ignores it without a stream. Beside one it takes the number as it is, without a look at its
    /// range: the runtime refuses -1.
    int deviceId = -1;
    /// A cudaStream_t of the calling thread's current device for all of the run's work; null lets the run make one for
    /// itself.
    CUstream_st* stream = nullptr;
};

}  // namespace zel
