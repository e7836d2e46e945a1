#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "zel/RunPlan.h"
#include "zel/export.h"

namespace zel {

class BaseAlgorithm;

/// Something that can carry out the algorithms of one class, as a back end offers it.
class ZEL_API Runnable {
public:
    virtual ~Runnable();
    /// Does the work. The algorithm is of the class that the runner was registered for, and validated.
    virtual void run(BaseAlgorithm* algorithm) = 0;
    /// Whether this machine has what the runner needs.
    virtual bool isAvailable() = 0;
    /// What the runner runs on: 3 for a GPU.
    virtual int runnerKind() = 0;
};

/// What the core knows of an algorithm class: its name, and who can run it. One per class, for the life of the process;
/// all operations may be called from several threads.
class ZEL_API AlgoInfo {
public:
    explicit AlgoInfo(std::string_view className);
    ~AlgoInfo();

    const std::string& className() const { return className_; }

    /// Takes the runner over. Runners are asked in the order in which they were added.
    void addRunner(Runnable* runner);
    /// Deletes the runner before it returns, so that a library can take its runners away while its code is still there.
    /// A runner that was never added is left alone.
    void removeRunner(Runnable* runner);

    /// The first runner that is available; null when none is.
    Runnable* availableRunner() const;
    std::size_t runnerCount() const;

    /// Tells the plan of a run: for an algorithm of the class, validated.
    using Planner = RunPlan (*)(BaseAlgorithm* algorithm);
    /// The planner of the runners; a back end takes it away, by null, together with them.
    void setPlanner(Planner wanted);
    Planner planner() const;

private:
    std::string className_;
    mutable std::mutex mutex_;
    std::vector<std::unique_ptr<Runnable>> runners_;
    Planner planner_ = nullptr;
};

}  // namespace zel
