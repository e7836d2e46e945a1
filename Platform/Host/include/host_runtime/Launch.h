#pragma once

#include <cstdint>
#include <memory>
#include <tuple>
#include <type_traits>

#include "Kernel.h"

namespace zel::host {

/// A kernel with its arguments, its types forgotten.
struct KernelCall {
    const void* kernel;  ///< which one it is
    const void* call;    ///< null when there is none
    /// Runs `count` parts of blocks on this thread, the first one being that of blockIdx and blockPart.
    void (*runParts)(const void* call, std::uint64_t count);
    /// For a launch that runs after its caller has gone on.
    std::shared_ptr<const void> (*copy)(const void* call);
};

ZEL_HOST_API cudaError_t launchKernel(const cudaLaunchConfig_t* config, const KernelCall& call);

/// Moves on to the next part of the block, or else to the next block of the grid.
inline void advancePart() {
    if (++blockPart.index != blockPart.count) return;
    blockPart.index = 0;
    if (++blockIdx.x != gridDim.x) return;
    blockIdx.x = 0;
    if (++blockIdx.y != gridDim.y) return;
    blockIdx.y = 0;
    ++blockIdx.z;
}

template <class... Parameters>
struct TypedKernelCall {
    void (*kernel)(Parameters...);
    std::tuple<Parameters...> arguments;

    static void runParts(const void* call, std::uint64_t count) {
        const auto& self = *static_cast<const TypedKernelCall*>(call);
        for (;;) {
            std::apply(self.kernel, self.arguments);
            if (--count == 0) return;
            advancePart();
        }
    }
    static std::shared_ptr<const void> copy(const void* call) {
        // Not make_shared(), whose tag is a unique symbol: it would keep a library with kernels from being unloaded.
        return std::shared_ptr<const void>(new TypedKernelCall(*static_cast<const TypedKernelCall*>(call)));
    }
};

}  // namespace zel::host

/// Launches a kernel. The arguments are converted to the kernel's parameters and copied here, as on a GPU.
template <class... Parameters, class... Arguments>
cudaError_t cudaLaunchKernelEx(const cudaLaunchConfig_t* config, void (*kernel)(Parameters...),
                               Arguments&&... arguments) {
    using Call = zel::host::TypedKernelCall<Parameters...>;
    const Call call{kernel, {static_cast<Parameters>(arguments)...}};
    return zel::host::launchKernel(
        config, {reinterpret_cast<const void*>(kernel), kernel ? &call : nullptr, Call::runParts, Call::copy});
}
