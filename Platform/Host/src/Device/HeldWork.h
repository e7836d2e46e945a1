#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <memory>

namespace zel::host {

/// Work that a call asked for and that is held back, since one run may do it together with the work of the next call.
///
/// Nobody can tell: device memory is seen by calls only, and each call but those that add to held work runs it first,
/// whichever thread makes it. A synchronisation promises no more than that what follows it sees the work done; so the
/// first one behind held work leaves it, as between two passes of a filter. A second one runs it, for a caller who is
/// done with a piece of work and may look at it for a while without a call.
class HeldWork {
public:
    virtual ~HeldWork() = default;
    /// Adds work that comes next on the same stream, if one run does both as if one after the other.
    virtual bool append(const HeldWork& next) = 0;
    virtual bool writes(const void* address, std::size_t bytes) const = 0;
    virtual void run() const = 0;
};

/// Whether calls may hold work back now: not in the test modes that look at when a call does its work, or at what it
/// does to memory.
bool mayHoldWork();

/// Adds `next` to what is held, or runs that and holds `next` instead. One piece is held at a time.
void holdWork(cudaStream_t stream, std::unique_ptr<HeldWork> next);

/// Return when nothing is held. The exception of work that fails goes to one caller.
void runHeldWork();
void runHeldWorkThatWrites(const void* address, std::size_t bytes);

/// What a call means for held work.
enum class HeldWorkUse {
    run,          ///< runs it
    synchronise,  ///< leaves it the first time, and then runs it
    extend,       ///< leaves it to the call, which adds to it or runs it
};
void beforeCall(HeldWorkUse use);

}  // namespace zel::host
