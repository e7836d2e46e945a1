#include "zel/AbstractPrivateImplementation.h"

#include "zel/BaseAlgorithm.h"
#include "zel/Exceptions.h"

namespace zel {

AbstractPrivateImplementation::AbstractPrivateImplementation(BaseAlgorithm* algorithm) : algorithm_(algorithm) {
    // A cancellation may be waiting already; no derived class overrides what it calls.
    algorithm_->attach(this);
}

AbstractPrivateImplementation::~AbstractPrivateImplementation() {
    algorithm_->detach(this);
}

void AbstractPrivateImplementation::cancelExecution() {
    cancelled_.store(true, std::memory_order_relaxed);
}

void AbstractPrivateImplementation::setNumberOfSteps(std::uint64_t count) {
    algorithm_->setNumberOfSteps(count);
}

void AbstractPrivateImplementation::incrementStep(std::uint64_t count) {
    algorithm_->advance(count);
}

void AbstractPrivateImplementation::runChildAlgo(BaseAlgorithm* child) {
    child->run();
    nextStep();
}

bool AbstractPrivateImplementation::isCancelled() const {
    if (cancelled_.load(std::memory_order_relaxed)) return true;
    return algorithm_->parent_ != nullptr && algorithm_->parent_->isCancelled();
}

void AbstractPrivateImplementation::throwIfCancelled() const {
    if (isCancelled()) throw ExceptionCancelation();
}

}  // namespace zel
