#include "zel/algorithms/RunnerAlgorithm.h"

#include "AdaptedImages.h"
#include "Helper/raise.h"

namespace zel {

namespace {

// Linkers drop a library of which they use no symbol, where they are told --as-needed.
constexpr const char* noBackEnd =
    ": no back end is loaded; link libbrontal_zel_cuda behind -Wl,--no-as-needed, or open it with dlopen";

/// @throws RuntimeError when no runner is available.
Runnable& requireRunner(const AlgoInfo& info) {
    if (Runnable* const runner = info.availableRunner(); runner != nullptr) return *runner;
    raise<RuntimeError>("Core/src/algorithms/RunnerAlgorithm", __LINE__, "No runner is available for ",
                        info.className(), info.runnerCount() > 0 ? "" : noBackEnd);
}

}  // namespace

RunnerAlgorithm::RunnerAlgorithm(AbstractPrivateImplementation* parent) : BaseAlgorithm(parent) {}
RunnerAlgorithm::~RunnerAlgorithm() = default;

void RunnerAlgorithm::execute() {
    Runnable& runner = requireRunner(*classInfo());
    const std::unique_ptr<AdaptedImages> adapted = adaptImages();
    runner.run(this);
}

RunPlan RunnerAlgorithm::plan() {
    validate();
    requireRunner(*classInfo());
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
