#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "Blocks/BlockMemory.h"
#include "Blocks/BlockThread.h"
#include "Blocks/Launch.h"
#include "Blocks/RedZoneWatch.h"
#include "Blocks/ThreadErrors.h"
#include "Device/Allocations.h"
#include "Device/Modes.h"
#include "Device/RunningKernel.h"
#include "Device/Settings.h"

constinit thread_local uint3 threadIdx{};

namespace zel::host {
namespace {

using Random = std::mt19937_64;

std::vector<std::uint64_t> shuffledOrder(std::uint64_t count, Random& random) {
    std::vector<std::uint64_t> order(count);
    std::iota(order.begin(), order.end(), std::uint64_t{0});
    std::shuffle(order.begin(), order.end(), random);
    return order;
}

/// The fibers of a calling thread, kept for its next launches.
std::vector<BlockThread*> fibers(std::uint64_t count) {
    thread_local std::vector<std::unique_ptr<BlockThread>> kept;
    while (kept.size() < count) kept.push_back(std::make_unique<BlockThread>());
    std::vector<BlockThread*> some;
    for (std::uint64_t i = 0; i < count; ++i) some.push_back(kept[i].get());
    return some;
}

bool isSame(const std::source_location& a, const std::source_location& b) {
    return a.line() == b.line() && a.column() == b.column() && std::strcmp(a.file_name(), b.file_name()) == 0;
}

/// One launch, block by block. So what a thread damages beside memory is found before another one runs, and what lies
/// further off at the end of its block.
class LaunchRun {
public:
    LaunchRun(const Launch& launch, Random& random)
        : launch_(launch), random_(random), threads_(fibers(launch.threadsPerBlock())), outer_(current) {
        current = this;
        order_.begin.release();
    }
    ~LaunchRun() {
        order_.end.acquire();
        current = outer_;
    }
    LaunchRun(const LaunchRun&) = delete;
    LaunchRun& operator=(const LaunchRun&) = delete;

    void runBlock(std::uint64_t number) {
        launch_.enter(number);
        const BlockMemory memory(launch_.sharedBytes);
        blockSharedMemory = memory.get();
        const auto order = newOrder();
        // Any fiber becomes any thread: two blocks' threads of one index are then seldom one and the same to
        // ThreadSanitizer.
        std::shuffle(threads_.begin(), threads_.end(), random_);
        const dim3 block = launch_.block;
        uint3 index{};
        for (BlockThread* const thread : threads_) {
            thread->enter(launch_.kernel, index, order_, *order);
            if (++index.x == block.x) {
                index.x = 0;
                if (++index.y == block.y) index = {0, 0, index.z + 1};
            }
        }
        do {
            runToBarrier(memory);
        } while (allWaitAtOneBarrier());
        allocations().checkRedZones();
    }

    /// The one of the calling thread; null outside of launches.
    static constinit thread_local LaunchRun* current;
    /// The thread that runs now; null between two of them.
    BlockThread* runs() const { return runs_; }
    const void* kernel() const { return launch_.kernel.kernel; }

private:
    struct Delete {
        void operator()(BlockOrder* order) const {
            const UnorderedMemory unordered;
            delete order;
        }
    };
    static std::unique_ptr<BlockOrder, Delete> newOrder() {
        const UnorderedMemory unordered;
        return std::unique_ptr<BlockOrder, Delete>(new BlockOrder);
    }

    void runToBarrier(const BlockMemory& memory) {
        std::shuffle(threads_.begin(), threads_.end(), random_);
        for (BlockThread* const thread : threads_) {
            runs_ = thread;
            thread->resume();
            memory.checkRedZone();
            redZones_.look();
            runs_ = nullptr;
            if (thread->failure()) fail(thread->failure());
        }
    }

    [[noreturn]] void fail(const std::exception_ptr& failure) {
        for (BlockThread* const thread : threads_)
            if (!thread->hasEnded() && thread->barriers() != 0) thread->abandon();
        std::rethrow_exception(failure);
    }

    /// False when all have ended.
    bool allWaitAtOneBarrier() const {
        const auto waiting = std::find_if(threads_.begin(), threads_.end(), [](auto* t) { return !t->hasEnded(); });
        if (waiting == threads_.end()) return false;
        const std::source_location& place = (*waiting)->place();
        for (const BlockThread* const thread : threads_)
            if (thread->hasEnded() || !isSame(thread->place(), place))
                endWithBarrierError(kernel(), **waiting, *thread);
        return true;
    }

    const Launch& launch_;
    Random& random_;
    std::vector<BlockThread*> threads_;
    LaunchOrder order_;
    LaunchRun* const outer_;
    BlockThread* runs_ = nullptr;
    RedZoneWatch redZones_;
};
constinit thread_local LaunchRun* LaunchRun::current = nullptr;

}  // namespace

void runBlocks(const Launch& launch) {
    reportBadAddresses();
    Random random(threadSeedSetting() + modes.blockShuffleSeed);
    const auto order = shuffledOrder(launch.blocks(), random);
    LaunchRun run(launch, random);
    for (const std::uint64_t block : order) run.runBlock(block);
}

void waitForBlock(std::source_location place) {
    LaunchRun::current->runs()->wait(place);
}

std::string runningKernelThread() {
    const LaunchRun* const run = LaunchRun::current;
    if (run == nullptr) return {};
    if (run->runs() == nullptr) return kernelBlockText(run->kernel(), blockIdx) + "after its last thread: ";
    return kernelThreadText(run->kernel(), blockIdx, run->runs()->index());
}

}  // namespace zel::host
