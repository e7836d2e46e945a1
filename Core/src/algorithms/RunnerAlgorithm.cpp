#include "zel/algorithms/RunnerAlgorithm.h"

#include "AdaptedImages.h"

namespace zel {

RunnerAlgorithm::RunnerAlgorithm() = default;
RunnerAlgorithm::~RunnerAlgorithm() = default;

void RunnerAlgorithm::execute() {
    const std::unique_ptr<AdaptedImages> adapted = adaptImages();
    BaseAlgorithm::execute();
}

std::unique_ptr<AdaptedImages> RunnerAlgorithm::adaptImages() {
    return nullptr;
}

}  // namespace zel
