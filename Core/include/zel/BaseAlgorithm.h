#pragma once

#include <cstdint>
#include <mutex>

#include "zel/AlgoInfo.h"
#include "zel/InteractionInterface.h"
#include "zel/export.h"

namespace zel {

class AbstractPrivateImplementation;

/// An algorithm: set its properties, then run it, as often as you like. One run of an object at a time; different
/// objects may run at once.
class ZEL_API BaseAlgorithm {
public:
    BaseAlgorithm(const BaseAlgorithm&) = delete;
    BaseAlgorithm& operator=(const BaseAlgorithm&) = delete;
    virtual ~BaseAlgorithm();

    /// Does the work and returns when the results are there.
    /// @param interaction  told of the progress; may be null.
    /// @throws RuntimeError         bad properties (with name, value and what is allowed), no runner, a failed device.
    /// @throws ExceptionCancelation the run was cancelled. Outputs may be partly written.
    void run(InteractionInterface* interaction = nullptr);

    /// Ends the run that is in progress at its next poll; without one it does nothing. From any thread.
    void cancel();

    /// The registry's entry of the object's class.
    virtual AlgoInfo* classInfo() const = 0;

protected:
    /// @param parent  the run that this algorithm is a step of; null for an algorithm of its own.
    explicit BaseAlgorithm(AbstractPrivateImplementation* parent = nullptr) : parent_(parent) {}

    /// Raises RuntimeError when the properties do not fit together. Called before each run.
    virtual void validate() const = 0;
    /// Carries the run out.
    virtual void execute() = 0;

private:
    friend class AbstractPrivateImplementation;
    class RunScope;

    void attach(AbstractPrivateImplementation* implementation);
    void detach(AbstractPrivateImplementation* implementation);
    void setNumberOfSteps(std::uint64_t count);
    void advance(std::uint64_t count);
    void report() const;

    AbstractPrivateImplementation* const parent_;
    InteractionInterface* interaction_ = nullptr;
    std::uint64_t stepsDone_ = 0;
    std::uint64_t stepsTotal_ = 0;

    std::mutex mutex_;  // of the three below, which cancel() reads from other threads
    bool running_ = false;
    bool cancelRequested_ = false;
    AbstractPrivateImplementation* implementation_ = nullptr;
};

}  // namespace zel
