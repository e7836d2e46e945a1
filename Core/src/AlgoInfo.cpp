#include "zel/AlgoInfo.h"

#include <algorithm>

namespace zel {

Runnable::~Runnable() = default;

AlgoInfo::AlgoInfo(std::string_view className) : className_(className) {}
AlgoInfo::~AlgoInfo() = default;

void AlgoInfo::addRunner(Runnable* runner) {
    const std::lock_guard lock(mutex_);
    runners_.emplace_back(runner);
}

void AlgoInfo::removeRunner(Runnable* runner) {
    const std::lock_guard lock(mutex_);
    std::erase_if(runners_, [runner](const auto& entry) { return entry.get() == runner; });
}

Runnable* AlgoInfo::availableRunner() const {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(runners_.begin(), runners_.end(), [](const auto& r) { return r->isAvailable(); });
    return found == runners_.end() ? nullptr : found->get();
}

std::size_t AlgoInfo::runnerCount() const {
    const std::lock_guard lock(mutex_);
    return runners_.size();
}

void AlgoInfo::setPlanner(Planner wanted) {
    const std::lock_guard lock(mutex_);
    planner_ = wanted;
}

AlgoInfo::Planner AlgoInfo::planner() const {
    const std::lock_guard lock(mutex_);
    return planner_;
}

}  // namespace zel
