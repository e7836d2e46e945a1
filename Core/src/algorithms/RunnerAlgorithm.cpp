#include "zel/algorithms/RunnerAlgorithm.h"

#include "AdaptedImages.h"
#include "Helper/raise.h"

namespace zel {

RunnerAlgorithm::RunnerAlgorithm(AbstractPrivateImplementation* parent) : BaseAlgorithm(parent) {}
RunnerAlgorithm::~RunnerAlgorithm() = default;

void RunnerAlgorithm::execute() {
    Runnable* const runner = classInfo()->availableRunner();
    if (runner == nullptr) {
        raise<RuntimeError>("Core/src/algorithms/RunnerAlgorithm", __LINE__, "No runner is available for ",
                            classInfo()->className());
    }
    const std::unique_ptr<AdaptedImages> adapted = adaptImages();
    runner->run(this);
}

std::unique_ptr<AdaptedImages> RunnerAlgorithm::adaptImages() {
    return nullptr;
}

}  // namespace zel
