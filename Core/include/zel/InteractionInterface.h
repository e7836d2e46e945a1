#pragma once

#include <cstdint>

#include "zel/export.h"

namespace zel {

/// Told of a run's progress, on the thread of the run.
class ZEL_API InteractionInterface {
public:
    virtual ~InteractionInterface();
    /// `done` of `total` steps are behind. Called once with 0 when the total is known, then after each step; a run that
    /// succeeds ends with done = total.
    virtual void progress(std::uint64_t done, std::uint64_t total) = 0;
};

}  // namespace zel
