#pragma once

struct CUstream_st;

namespace zel {

/// Where the caller wants a run to happen. Everything here stays the caller's.
class CudaContext {
public:
    /// The GPU; a negative or too large number stands for the calling thread's current one.
    int deviceId = -1;
    /// A cudaStream_t for all of the run's work; null lets the run make one for itself.
    CUstream_st* stream = nullptr;
};

}  // namespace zel
