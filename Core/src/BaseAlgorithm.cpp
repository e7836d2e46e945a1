#include "zel/BaseAlgorithm.h"

#include "Helper/raise.h"
#include "zel/AbstractPrivateImplementation.h"

namespace zel {

BaseAlgorithm::~BaseAlgorithm() = default;

namespace {

/// Not through the virtual table: on the thread of the run, construction or destruction may be writing it just now.
void cancelNow(AbstractPrivateImplementation& implementation) {
    implementation.AbstractPrivateImplementation::cancelExecution();
}

}  // namespace

/// Marks the object as running, from before the properties are looked at until the last thing is undone.
class BaseAlgorithm::RunScope {
public:
    RunScope(BaseAlgorithm& algorithm, InteractionInterface* interaction) : algorithm_(algorithm) {
        const std::lock_guard lock(algorithm_.mutex_);
        if (algorithm_.running_) {
            raise<RuntimeError>("Core/src/BaseAlgorithm", __LINE__, "this ", algorithm_.classInfo()->className(),
                                " is running already; use another object to run two at once");
        }
        algorithm_.running_ = true;
        algorithm_.cancelRequested_ = false;
        algorithm_.interaction_ = interaction;
        algorithm_.stepsDone_ = algorithm_.stepsTotal_ = 0;
    }
    ~RunScope() {
        const std::lock_guard lock(algorithm_.mutex_);
        algorithm_.interaction_ = nullptr;
        algorithm_.running_ = false;
    }
    RunScope(const RunScope&) = delete;
    RunScope& operator=(const RunScope&) = delete;

private:
    BaseAlgorithm& algorithm_;
};

void BaseAlgorithm::run(InteractionInterface* interaction) {
    const RunScope scope(*this, interaction);
    validate();
    execute();
    // Some paths have fewer steps than were announced.
    if (stepsDone_ < stepsTotal_) advance(stepsTotal_ - stepsDone_);
}

void BaseAlgorithm::cancel() {
    const std::lock_guard lock(mutex_);
    if (!running_) return;
    cancelRequested_ = true;
    if (implementation_ != nullptr) cancelNow(*implementation_);
}

void BaseAlgorithm::attach(AbstractPrivateImplementation* implementation) {
    const std::lock_guard lock(mutex_);
    implementation_ = implementation;
    if (cancelRequested_) cancelNow(*implementation);
}

void BaseAlgorithm::detach(AbstractPrivateImplementation* implementation) {
    const std::lock_guard lock(mutex_);
    if (implementation_ == implementation) implementation_ = nullptr;
}

void BaseAlgorithm::setNumberOfSteps(std::uint64_t count) {
    stepsDone_ = 0;
    stepsTotal_ = count;
    report();
}

void BaseAlgorithm::advance(std::uint64_t count) {
    stepsDone_ += count;
    report();
}

void BaseAlgorithm::report() const {
    if (interaction_ != nullptr) interaction_->progress(stepsDone_, stepsTotal_);
}

}  // namespace zel
