#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <random>
#include <vector>

#include "Calls/RuntimeCall.h"
#include "Device/Streams.h"
#include "Threads/Arena.h"
#include "Threads/Team.h"
#include "Threads/Ticks.h"
#include "host_runtime/Parallel.h"

constinit thread_local uint3 blockIdx{};
constinit thread_local dim3 blockDim;
constinit thread_local dim3 gridDim;
constinit thread_local void* zel::host::blockSharedMemory = nullptr;

namespace zel::host {
namespace {

struct Launch {
    dim3 grid;
    dim3 block;
    std::size_t sharedBytes;
    KernelCall kernel;

    std::uint64_t blocks() const { return std::uint64_t{grid.x} * grid.y * grid.z; }

    /// Runs neighbouring blocks on this thread.
    void run(std::uint64_t first, std::uint64_t count) const {
        gridDim = grid;
        blockDim = block;
        const std::uint64_t row = first / grid.x;
        blockIdx = {static_cast<unsigned int>(first % grid.x), static_cast<unsigned int>(row % grid.y),
                    static_cast<unsigned int>(row / grid.y)};
        if (sharedBytes != 0) return runWithSharedMemory(count);
        blockSharedMemory = nullptr;
        kernel.runBlocks(kernel.call, count);
    }

private:
    /// Of just the size asked for and on the stack, where AddressSanitizer sees overruns.
    [[gnu::noinline]] void runWithSharedMemory(std::uint64_t count) const {
        constexpr std::size_t alignmentBits = 512;
        blockSharedMemory = __builtin_alloca_with_align(sharedBytes, alignmentBits);
        kernel.runBlocks(kernel.call, count);
        blockSharedMemory = nullptr;
    }
};

/// The same order for the same seed, hence one block after the other.
void runShuffled(const Launch& launch, std::uint64_t seed) {
    std::vector<std::uint64_t> order(launch.blocks());
    std::iota(order.begin(), order.end(), std::uint64_t{0});
    std::shuffle(order.begin(), order.end(), std::mt19937_64(seed));
    for (const std::uint64_t block : order) launch.run(block, 1);
}

/// Measured cost per block of a kernel's last launch, in ticks; 0 before it is known.
struct Pace {
    const void* kernel = nullptr;
    std::uint64_t blocks = 0;
    double perBlock = 0;
};

/// The paces of this thread's last launches: a volume is filtered by launches of the same few kernels for each slice.
class Paces {
public:
    Pace& of(const void* kernel, std::uint64_t blocks) {
        for (Pace& pace : paces_)
            if (pace.kernel == kernel && pace.blocks == blocks) return pace;
        return paces_[oldest_++ % paces_.size()] = {kernel, blocks, 0};
    }

private:
    std::array<Pace, 8> paces_{};
    std::size_t oldest_ = 0;
};
constinit thread_local Paces paces;

/// Runs 1, 2, 4, ... blocks until their pace is known or all are done. Gives how many.
std::uint64_t tryBlocks(const Launch& launch, Pace& pace) {
    constexpr double trial = 1000 * ticksPerNanosecond;
    const std::uint64_t start = ticks();
    std::uint64_t done = 0;
    double spent = 0;
    for (std::uint64_t step = 1; done < pace.blocks && spent < trial; step *= 2) {
        const std::uint64_t count = std::min(step, pace.blocks - done);
        launch.run(done, count);
        done += count;
        spent = static_cast<double>(ticks() - start);
    }
    pace.perBlock = std::max(spent, 1.0) / static_cast<double>(done);
    return done;
}

/// Handing blocks to other threads costs up to some microseconds. So the calling thread learns the blocks' pace first,
/// hands over only what is worth it, and in pieces that outweigh their dealing. A kernel whose arguments have changed
/// since its last launch may run at another pace: one launch is then dealt badly, and the next one knows.
void runBlocks(const Launch& launch) {
    constexpr double worthSharing = 4000 * ticksPerNanosecond;
    const std::uint64_t blocks = launch.blocks();
    const std::size_t threads = blocks == 1 ? 1 : usableThreads();
    if (threads == 1) return launch.run(0, blocks);

    Pace& pace = paces.of(launch.kernel.kernel, blocks);
    const std::uint64_t done = pace.perBlock != 0 ? 0 : tryBlocks(launch, pace);
    const std::uint64_t left = blocks - done;
    if (left == 0) return;
    const std::uint64_t start = ticks();
    const auto spent = [&] { return std::max(1.0, static_cast<double>(ticks() - start)); };
    if (pace.perBlock * static_cast<double>(left) < worthSharing) {
        launch.run(done, left);
        pace.perBlock = spent() / static_cast<double>(left);
    } else {
        const double piece = (isWorkerWaiting() ? 1000 : 4000) * ticksPerNanosecond;
        parallelFor(left, static_cast<std::size_t>(std::max(1.0, piece / pace.perBlock)),
                    [&](std::size_t begin, std::size_t end) { launch.run(done + begin, end - begin); });
        // With the cost of sharing in it the pace can only be overrated.
        pace.perBlock = std::min(pace.perBlock, static_cast<double>(threads) * spent() / static_cast<double>(left));
    }
}

void execute(const Launch& launch) {
    if (const std::uint64_t seed = modes.blockShuffleSeed; seed != 0) return runShuffled(launch, seed);
    runBlocks(launch);
}

bool isLegalGrid(dim3 grid) {
    constexpr unsigned int maxX = 0x7fffffff;
    return grid.x - 1 < maxX && grid.y - 1 < maxGridYZ && grid.z - 1 < maxGridYZ;
}

bool isLegalBlock(dim3 block) {
    const bool sides = block.x - 1 < maxThreadsPerBlock && block.y - 1 < maxThreadsPerBlock && block.z - 1 < maxBlockZ;
    return sides && std::uint64_t{block.x} * block.y * block.z <= maxThreadsPerBlock;
}

cudaError_t check(const cudaLaunchConfig_t* config, const KernelCall& kernel) {
    if (config == nullptr) return cudaErrorInvalidValue;
    if (kernel.call == nullptr) return cudaErrorInvalidDeviceFunction;
    if (!isLegalGrid(config->gridDim) || !isLegalBlock(config->blockDim)) return cudaErrorInvalidConfiguration;
    if (config->dynamicSmemBytes > maxSharedBytes) return cudaErrorInvalidValue;
    const bool ours = isStream(config->stream) && streamOf(config->stream).device == currentDevice();
    return ours ? cudaSuccess : cudaErrorInvalidResourceHandle;
}

}  // namespace

cudaError_t launchKernel(const cudaLaunchConfig_t* config, const KernelCall& kernel) {
    return deviceCall("cudaLaunchKernelEx", [&] {
        if (const cudaError_t status = check(config, kernel); status != cudaSuccess) return status;
        const Launch launch{config->gridDim, config->blockDim, config->dynamicSmemBytes, kernel};
        CUstream_st& stream = streamOf(config->stream);
        if (modes.deferredStreams) {
            defer(stream, [later = Launch{launch}, arguments = kernel.copy(kernel.call)]() mutable {
                later.kernel.call = arguments.get();
                execute(later);
            });
        } else {
            runNow(stream, [&] { execute(launch); });
        }
        return cudaSuccess;
    });
}

}  // namespace zel::host
