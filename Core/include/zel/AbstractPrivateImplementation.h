#pragma once

#include <atomic>
#include <cstdint>

#include "zel/export.h"

namespace zel {

class BaseAlgorithm;

/// One run of an algorithm: made by a runner on its stack, run once, destroyed. It counts the steps, runs child
/// algorithms as steps of its own, and knows whether the run was cancelled.
class ZEL_API AbstractPrivateImplementation {
public:
    AbstractPrivateImplementation(const AbstractPrivateImplementation&) = delete;
    AbstractPrivateImplementation& operator=(const AbstractPrivateImplementation&) = delete;
    virtual ~AbstractPrivateImplementation();

    /// Asks the run to end; from any thread.
    virtual void cancelExecution();
    virtual void run() = 0;

    /// How many steps this run is going to have; reports that none is done yet.
    void setNumberOfSteps(std::uint64_t count);
    void nextStep() { incrementStep(1); }
    void incrementStep(std::uint64_t count);
    /// Runs a child that was made with this implementation as its parent; all of it is one step.
    void runChildAlgo(BaseAlgorithm* child);

    /// Whether this run, or the one that it is a step of, was cancelled.
    bool isCancelled() const;
    /// The poll. @throws ExceptionCancelation when the run was cancelled.
    void throwIfCancelled() const;

protected:
    explicit AbstractPrivateImplementation(BaseAlgorithm* algorithm);

private:
    BaseAlgorithm* const algorithm_;
    std::atomic<bool> cancelled_{false};  // relaxed: it orders nothing, it is only seen at the next poll
};

}  // namespace zel
