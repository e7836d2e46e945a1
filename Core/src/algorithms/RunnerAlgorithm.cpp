#include "zel/algorithms/RunnerAlgorithm.h"

#include "AdaptedImages.h"
#include "Helper/raise.h"

namespace zel {

RunnerAlgorithm::RunnerAlgorithm(AbstractPrivateImplementation* parent) : BaseAlgorithm(parent) {}
RunnerAlgorithm::~RunnerAlgorithm() = default;

Runnable& RunnerAlgorithm::requireRunner() const {
    if (Runnable* const runner = classInfo()->availableRunner(); runner != nullptr) return *runner;
    raise<RuntimeError>("Core/src/algorithms/RunnerAlgorithm", __LINE__, "No runner is available for ",
                        classInfo()->className());
}

void RunnerAlgorithm::execute() {
    Runnable& runner = requireRunner();
    const std::unique_ptr<AdaptedImages> adapted = adaptImages();
    runner.run(this);
}

RunPlan RunnerAlgorithm::plan() {
    validate();
    requireRunner();
    const AlgoInfo::Planner planner = classInfo()->planner();
    if (planner == nullptr) {
        raise<RuntimeError>("Core/src/algorithms/RunnerAlgorithm", __LINE__, "No planner is available for ",
                            classInfo()->className());
    }
    const std::unique_ptr<AdaptedImages> adapted = adaptImages();
    return planner(this);
}

std::unique_ptr<AdaptedImages> RunnerAlgorithm::adaptImages() {
    return nullptr;
}

}  // namespace zel
