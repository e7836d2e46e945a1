#include <algorithm>
#include <array>
#include <numeric>
#include <random>
#include <vector>

#include "Blocks/Launch.h"
#include "Device/Modes.h"
#include "Device/RunningKernel.h"
#include "Threads/Arena.h"
#include "Threads/Team.h"
#include "Threads/Ticks.h"
#include "host_runtime/Parallel.h"

namespace zel::host {
namespace {

/// Shared memory of just the size asked for and on the stack, where AddressSanitizer sees overruns.
[[gnu::noinline]] void runWithSharedMemory(const Launch& launch, std::uint64_t count) {
    constexpr std::size_t alignmentBits = 512;
    blockSharedMemory = __builtin_alloca_with_align(launch.sharedBytes, alignmentBits);
    launch.kernel.runParts(launch.kernel.call, count);
    blockSharedMemory = nullptr;
}

/// Runs neighbouring blocks on this thread, or parts of blocks of which each has `parts`.
void runParts(const Launch& launch, std::uint64_t first, std::uint64_t count, unsigned int parts) {
    launch.enter(first / parts);
    blockPart = {static_cast<unsigned int>(first % parts), parts, false};
    if (launch.sharedBytes != 0) return runWithSharedMemory(launch, count);
    blockSharedMemory = nullptr;
    launch.kernel.runParts(launch.kernel.call, count);
}

/// The same order for the same seed, hence one block after the other.
void runShuffled(const Launch& launch, std::uint64_t seed) {
    std::vector<std::uint64_t> order(launch.blocks());
    std::iota(order.begin(), order.end(), std::uint64_t{0});
    std::shuffle(order.begin(), order.end(), std::mt19937_64(seed));
    for (const std::uint64_t block : order) runParts(launch, block, 1, 1);
}

/// The measured cost of a kernel's last launch of so many blocks.
struct Pace {
    const void* kernel = nullptr;
    std::uint64_t blocks = 0;
    unsigned int parts = 0;  ///< parts that a block is run in; 0 before it is known whether it can be
    double perPart = 0;      ///< measured cost of a part, in ticks; 0 before it is known

    std::uint64_t allParts() const { return blocks * parts; }
};

/// The paces of this thread's last launches: a volume is filtered by launches of the same few kernels for each slice.
class Paces {
public:
    Pace& of(const void* kernel, std::uint64_t blocks) {
        for (Pace& pace : paces_)
            if (pace.kernel == kernel && pace.blocks == blocks) return pace;
        return paces_[oldest_++ % paces_.size()] = {kernel, blocks, 0, 0};
    }

private:
    std::array<Pace, 8> paces_{};
    std::size_t oldest_ = 0;
};
constinit thread_local Paces paces;

/// Parts to cut a block into, so that each thread has a few pieces of work even where the launch has few blocks.
unsigned int wantedParts(std::uint64_t blocks, std::size_t threads) {
    constexpr std::size_t piecesPerThread = 4;
    return static_cast<unsigned int>((piecesPerThread * threads - 1) / blocks + 1);
}

/// Runs one part of the first block, which shows whether the kernel keeps to it or has run the whole block.
void tryPart(const Launch& launch, Pace& pace, std::size_t threads) {
    pace.parts = wantedParts(pace.blocks, threads);
    runParts(launch, 0, 1, pace.parts);
    if (!blockPart.taken) pace.parts = 1;
}

/// Runs 1, 2, 4, ... parts, `done` of which are done, until their pace is known or all are done. Gives how many are.
std::uint64_t tryParts(const Launch& launch, Pace& pace, std::uint64_t done, std::uint64_t start) {
    constexpr double trial = 1000 * ticksPerNanosecond;
    double spent = done == 0 ? 0 : static_cast<double>(ticks() - start);
    for (std::uint64_t step = 1; done < pace.allParts() && spent < trial; step *= 2) {
        const std::uint64_t count = std::min(step, pace.allParts() - done);
        runParts(launch, done, count, pace.parts);
        done += count;
        spent = static_cast<double>(ticks() - start);
    }
    pace.perPart = std::max(spent, 1.0) / static_cast<double>(done);
    return done;
}

/// Handing blocks to other threads costs up to some microseconds. So the calling thread learns the pace first, hands
/// over only what is worth it, and in pieces that outweigh their dealing. A kernel whose arguments have changed since
/// its last launch may run at another pace: one launch is then dealt badly, and the next one knows.
void runInOrder(const Launch& launch) {
    constexpr double worthSharing = 4000 * ticksPerNanosecond;
    Pace& pace = paces.of(launch.kernel.kernel, launch.blocks());
    const std::size_t threads = pace.blocks == 1 && pace.parts == 1 ? 1 : usableThreads();
    if (threads == 1) return runParts(launch, 0, pace.blocks, 1);

    const std::uint64_t trialStart = ticks();
    std::uint64_t done = 0;
    if (pace.parts == 0) {
        tryPart(launch, pace, threads);
        done = 1;
    }
    if (pace.perPart == 0) done = tryParts(launch, pace, done, trialStart);
    const std::uint64_t left = pace.allParts() - done;
    if (left == 0) return;
    const std::uint64_t start = ticks();
    const auto spent = [&] { return std::max(1.0, static_cast<double>(ticks() - start)); };
    if (pace.perPart * static_cast<double>(left) < worthSharing) {
        runParts(launch, done, left, pace.parts);
        pace.perPart = spent() / static_cast<double>(left);
    } else {
        const double piece = (isWorkerWaiting() ? 1000 : 4000) * ticksPerNanosecond;
        parallelFor(
            left, static_cast<std::size_t>(std::max(1.0, piece / pace.perPart)),
            [&](std::size_t begin, std::size_t end) { runParts(launch, done + begin, end - begin, pace.parts); });
        // The measured time includes the cost of sharing, so the kernel can only seem slower than it is.
        pace.perPart = std::min(pace.perPart, static_cast<double>(threads) * spent() / static_cast<double>(left));
    }
}

}  // namespace

void runBlocks(const Launch& launch) {
    if (const std::uint64_t seed = modes.blockShuffleSeed; seed != 0) return runShuffled(launch, seed);
    runInOrder(launch);
}

std::string runningKernelThread() {
    return {};
}

}  // namespace zel::host
