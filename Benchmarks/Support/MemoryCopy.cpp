#include "MemoryCopy.h"

#include <benchmark/benchmark.h>
#include <tbb/parallel_for.h>

#include <cstdint>
#include <cstring>
#include <numeric>

#include "Utilities_CUDA/DeviceMemory_CUDA.h"

namespace zel::bench {

namespace {

/// From the device, so that the pages are of the same size as ours; touched.
std::shared_ptr<void> touchedMemory(std::size_t bytes) {
    const auto memory = cuda::allocateDeviceMemory(bytes);
    std::memset(memory.get(), 1, bytes);
    return memory;
}

/// Calls part(begin, bytes) for both halves of so many bytes, on two threads.
template <typename Part>
void inHalves(std::size_t bytes, const Part& part) {
    const std::size_t half = bytes / 2;
    tbb::parallel_for(
        std::size_t{0}, std::size_t{2}, [&](std::size_t index) { part(index * half, half); },
        tbb::static_partitioner());
}

}  // namespace

Peer memoryCopyPeer(double bytes) {
    const std::size_t copied = static_cast<std::size_t>(bytes) / 4 * 2;
    const auto source = touchedMemory(copied);
    const auto target = touchedMemory(copied);
    const auto copy = [=] {
        inHalves(copied, [&](std::size_t begin, std::size_t count) {
            std::memcpy(static_cast<char*>(target.get()) + begin, static_cast<const char*>(source.get()) + begin,
                        count);
        });
    };
    return {"memcpy", copy, nullptr};
}

Peer memoryReadPeer(double bytes) {
    const std::size_t read = static_cast<std::size_t>(bytes) / 16 * 16;
    const auto memory = touchedMemory(read);
    const auto sum = [=] {
        inHalves(read, [&](std::size_t begin, std::size_t count) {
            const auto* const words = reinterpret_cast<const std::uint64_t*>(static_cast<char*>(memory.get()) + begin);
            benchmark::DoNotOptimize(std::accumulate(words, words + count / sizeof(std::uint64_t), std::uint64_t{0}));
        });
    };
    return {"read", sum, nullptr};
}

Contender memoryFill(double bytes) {
    const std::size_t filled = static_cast<std::size_t>(bytes) / 2 * 2;
    const auto memory = touchedMemory(filled);
    const auto fill = [=] {
        inHalves(filled, [&](std::size_t begin, std::size_t count) {
            std::memset(static_cast<char*>(memory.get()) + begin, 3, count);
        });
    };
    return {"memset alone", fill};
}

}  // namespace zel::bench
