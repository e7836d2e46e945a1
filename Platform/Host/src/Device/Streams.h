#pragma once

#include <cuda_runtime.h>

#include <functional>
#include <mutex>
#include <utility>

#include "Device/Allocations.h"
#include "Device/Modes.h"

struct CUstream_st {
    const int device;
    std::mutex turn;  ///< held by the work that runs now

    explicit CUstream_st(int device_) : device(device_) {}
};

namespace zel::host {

std::uint64_t liveStreams();

cudaStream_t createStream(int device);
/// Runs the stream's queued work and ends it, even where the work fails.
[[nodiscard]] cudaError_t destroyStream(cudaStream_t stream);
/// Whether a handle was that of a stream which a reset has ended.
bool isRetiredStream(cudaStream_t stream);

/// Whether a handle names a live stream of any device. Null, the current device's default stream, does.
bool isStream(cudaStream_t stream);
/// The stream that a handle names; null is the current device's default stream.
CUstream_st& streamOf(cudaStream_t stream);

/// Ends a device's streams and drops their queued work. Their handles name no stream from then on.
void discardStreams(int device);

// These run queued work, each piece once, and give the status of the first that fails.
/// Waits for a device's work, or for all devices'.
[[nodiscard]] cudaError_t synchronizeDevice(int device);
[[nodiscard]] cudaError_t runAllDeferredWork();
/// Waits for the work of one stream, and for what that has to wait for.
[[nodiscard]] cudaError_t synchronizeStream(CUstream_st& stream);

/// Queues work for a later synchronisation.
void defer(CUstream_st& stream, std::function<void()> work);

/// Runs work in the stream's order with device memory open to it.
template <class Work>
void runNow(CUstream_st& stream, const Work& work) {
    const std::lock_guard turn(stream.turn);
    const OpenMemory opened;
    work();
}

/// Runs work now, or in deferred mode queues it.
template <class Work>
void submit(cudaStream_t handle, Work&& work) {
    CUstream_st& stream = streamOf(handle);
    if (modes.deferredStreams)
        defer(stream, std::forward<Work>(work));
    else
        runNow(stream, work);
}

/// The same with a function. A null stream is the default stream.
void enqueue(cudaStream_t stream, std::function<void()> work);

}  // namespace zel::host
