// What happens when the library is loaded and unloaded. All of it stands in this one source, since the order of static
// objects across sources is not defined.

#include <array>

#include "Runners/CudaRunners_CUDA.h"
#include "diagnostics/DebugFacility.h"

namespace zel::cuda {

namespace {

/// Use of the debug facility from load to unload.
class Debugging {
public:
    Debugging() { diagnostics::initialiseDebugging(); }
    ~Debugging() { diagnostics::shutDownDebugging(); }
    Debugging(const Debugging&) = delete;
    Debugging& operator=(const Debugging&) = delete;
};

/// Hangs a runner on each algorithm class, and takes them away again in the reverse order. The core owns the runners
/// and deletes them.
class Registrations {
public:
    Registrations() { addAll(Algorithms{}); }
    ~Registrations() {
        for (auto one = registrations_.rbegin(); one != registrations_.rend(); ++one) remove(*one);
    }
    Registrations(const Registrations&) = delete;
    Registrations& operator=(const Registrations&) = delete;

private:
    struct Registration {
        AlgoInfo* (*classInfo)() = nullptr;
        Runnable* runner = nullptr;
    };

    template <typename... Algo>
    void addAll(TypeList<Algo...>) {
        registrations_ = {add<Algo>()...};
    }

    template <typename Algo>
    static Registration add() {
        AlgoInfo* const info = Algo::getClassInfo();
        if (info == nullptr) return {};
        auto* const runner = new CudaRunner<Algo>();
        info->addRunner(runner);
        info->setPlanner(&planOnGpu<Algo>);
        return {&Algo::getClassInfo, runner};
    }
    static void remove(const Registration& registration) {
        AlgoInfo* const info = registration.runner == nullptr ? nullptr : registration.classInfo();
        if (info == nullptr) return;
        info->setPlanner(nullptr);
        info->removeRunner(registration.runner);
    }

    std::array<Registration, Algorithms::size> registrations_;
};

// Set up from top to bottom at load, undone from bottom to top at unload.
const Debugging debugging;
const Registrations registrations;

}  // namespace

}  // namespace zel::cuda
