#pragma once

/// What the GPU back end exports. Loading the library is all that the algorithms need: it registers a runner for each
/// of them with the core. These functions are for whoever looks after the GPU.

struct CUstream_st;

extern "C" {

/// Sets the CUDA runtime up on the current device, so that the first run does not have to.
/// @throws zel::RuntimeError when the device refuses.
__attribute__((visibility("default"))) void zelCudaInit();

/// Whether there is a GPU.
/// @throws zel::RuntimeError when that cannot be found out.
__attribute__((visibility("default"))) bool zelIsCudaGpuAvailable();

/// A new stream (a cudaStream_t) on the current device, for CudaContext::stream. Give it back with
/// zelCudaDeleteCudaStream.
/// @throws zel::RuntimeError when the device refuses.
__attribute__((visibility("default"))) CUstream_st* zelCudaAllocateCudaStream();

/// @throws zel::RuntimeError when the stream is not one.
__attribute__((visibility("default"))) void zelCudaDeleteCudaStream(CUstream_st* stream);
}
