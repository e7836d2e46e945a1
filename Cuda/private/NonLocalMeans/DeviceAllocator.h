#pragma once

#include <cuda_runtime.h>
#include <thrust/device_ptr.h>
#include <thrust/device_reference.h>
#include <thrust/system/detail/bad_alloc.h>

#include <cstddef>
#include <limits>

#include "ThrustPolicy.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace amnlm {

/// Allocator of Thrust's device vectors over cudaMalloc and cudaFree. Thrust's own would end the process when a vector
/// is freed, while unwinding, against a device that was reset meanwhile.
template <typename T>
class DeviceAllocator {
public:
    using value_type = T;
    using pointer = thrust::device_ptr<T>;
    using const_pointer = thrust::device_ptr<const T>;
    using reference = thrust::device_reference<T>;
    using const_reference = thrust::device_reference<const T>;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;

    template <typename U>
    struct rebind {
        using other = DeviceAllocator<U>;
    };

    DeviceAllocator() = default;
    template <typename U>
    DeviceAllocator(const DeviceAllocator<U>&) {}

    /// @throws thrust::system::detail::bad_alloc (a std::bad_alloc) with the runtime's words; no error stays pending.
    pointer allocate(size_type count) {
        if (count > max_size()) throw thrust::system::detail::bad_alloc("too many elements for device memory");
        void* memory = nullptr;
        const cudaError_t status = cudaMalloc(&memory, count * sizeof(T));
        if (status != cudaSuccess) {
            cudaGetLastError();
            throw thrust::system::detail::bad_alloc(cudaGetErrorString(status));
        }
        return thrust::device_pointer_cast(static_cast<T*>(memory));
    }

    void deallocate(pointer memory, size_type) noexcept { zel::cuda::ignoreCudaStatus(cudaFree(memory.get())); }

    static constexpr size_type max_size() { return std::numeric_limits<size_type>::max() / sizeof(T); }

    template <typename U>
    bool operator==(const DeviceAllocator<U>&) const {
        return true;
    }
    template <typename U>
    bool operator!=(const DeviceAllocator<U>&) const {
        return false;
    }
};

/// The same for vectors whose elements begin with any value.
template <typename T>
class ScratchAllocator : public DeviceAllocator<T> {
public:
    template <typename U>
    struct rebind {
        using other = ScratchAllocator<U>;
    };

    ScratchAllocator() = default;
    template <typename U>
    ScratchAllocator(const ScratchAllocator<U>&) {}

    template <typename U>
    __host__ __device__ static void construct(U*) {}
};

}  // namespace amnlm
