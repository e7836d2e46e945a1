#include "MemoryCopy.h"

#include <tbb/parallel_for.h>

#include <cstring>

#include "Utilities_CUDA/DeviceMemory_CUDA.h"

namespace zel::bench {

Peer memoryCopyPeer(double bytes) {
    const auto half = static_cast<std::size_t>(bytes) / 4;
    // From the device, so that the pages are of the same size as ours.
    const auto source = cuda::allocateDeviceMemory(2 * half);
    const auto target = cuda::allocateDeviceMemory(2 * half);
    std::memset(source.get(), 1, 2 * half);
    std::memset(target.get(), 2, 2 * half);
    const auto copy = [=] {
        const auto copyHalf = [&](std::size_t index) {
            std::memcpy(static_cast<char*>(target.get()) + index * half,
                        static_cast<const char*>(source.get()) + index * half, half);
        };
        tbb::parallel_for(std::size_t{0}, std::size_t{2}, copyHalf, tbb::static_partitioner());
    };
    return {"memcpy", copy, nullptr};
}

}  // namespace zel::bench
