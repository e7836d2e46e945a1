#include "zel/algorithms/RunnerAlgorithm.h"

#include "AdaptedImages.h"
#include "Helper/raise.h"

namespace zel {

namespace {

// Linkers drop a library of which they use no symbol, where they are told --as-needed.
constexpr const char* noBackEnd =
    ": no back end is loaded; link libbrontal_zel_cuda behind -Wl,--no-as-needed, or open it with dlopen";

}  // namespace

RunnerAlgorithm::RunnerAlgorithm(AbstractPrivateImplementation* parent) : BaseAlgorithm(parent) {}
RunnerAlgorithm::~RunnerAlgorithm() = default;

Runnable& RunnerAlgorithm::requireRunner() const {
    if (Runnable* const runner = classInfo()->availableRunner(); runner != nullptr) return *runner;
    const bool isLoaded = classInfo()->runnerCount() > 0;
    raise<RuntimeError>("Core/src/algorithms/RunnerAlgorithm", __LINE__, "No runner is available for ",
                        classInfo()->className(), isLoaded ? "" : noBackEnd);
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
