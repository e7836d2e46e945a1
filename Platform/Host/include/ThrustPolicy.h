#pragma once

#include <thrust/copy.h>
#include <thrust/for_each.h>
#include <thrust/memory.h>
#include <thrust/reduce.h>
#include <thrust/system_error.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>

#include "host_runtime/Calls.h"
#include "host_runtime/Parallel.h"
#include "host_runtime/ThrustCall.h"
#include "host_runtime/ThrustIterators.h"

/// What Thrust's algorithms, vectors and element accesses come down to on the host device. All of it goes through
/// callThrust(). Sums are taken in an order that depends on their length alone, so that a result has the same bits in
/// every run and for every number of threads.
namespace zel::host::thrust_device {

static_assert(std::is_same_v<thrust::device_system_tag, Policy>, "this Thrust keeps its device's tag elsewhere");

/// The runtime's statuses as codes of Thrust's exceptions.
class StatusCategory : public thrust::system::error_category {
public:
    const char* name() const override { return "cuda"; }
    std::string message(int status) const override { return cudaGetErrorString(static_cast<cudaError_t>(status)); }
};

inline void check(cudaError_t status, const char* call) {
    static const StatusCategory category;
    if (status != cudaSuccess) throw thrust::system::system_error(status, category, call);
}

/// @throws thrust::system::system_error with the call's status.
template <typename Work>
void run(const char* call, ThrustWork kind, const Work& work) {
    check(callThrust(call, kind, std::cref(work)), call);
}

/// Items that are worth a piece of their own.
inline constexpr std::size_t pieceItems = 16384;

/// Where the host's memory and the device's meet, it is the device's work.
template <typename Host>
Policy& select_system(Policy& device, thrust::cpp::execution_policy<Host>&) {
    return device;
}
template <typename Host>
Policy& select_system(thrust::cpp::execution_policy<Host>&, Policy& device) {
    return device;
}

/// The element-wise algorithms (transform, fill, ...) and the construction of vectors.
template <typename Iterator, typename Size, typename Function>
Iterator for_each_n(const Policy&, Iterator first, Size count, Function function) {
    const auto items = RawIterators::of(first);
    const auto runPiece = [&](std::size_t begin, std::size_t end) {
        Function call = function;
        for (std::size_t i = begin; i < end; ++i) call(*(items + static_cast<std::ptrdiff_t>(i)));
    };
    run("thrust::for_each", ThrustWork::launch,
        [&] { parallelFor(static_cast<std::size_t>(count), pieceItems, runPiece); });
    return first + count;
}

template <typename Iterator, typename Function>
Iterator for_each(const Policy& policy, Iterator first, Iterator last, Function function) {
    return for_each_n(policy, first, last - first, function);
}

/// Copies within the device's memory and between it and the host's.
template <typename Input, typename Size, typename Output>
Output copy_n(const Policy&, Input first, Size count, Output result) {
    const auto from = RawIterators::of(first);
    const auto to = RawIterators::of(result);
    const auto items = static_cast<std::size_t>(count);
    const auto copyPiece = [&](std::size_t begin, std::size_t end) {
        const auto offset = static_cast<std::ptrdiff_t>(begin);
        std::copy_n(from + offset, end - begin, to + offset);
    };
    // The flags of a std::vector<bool> share bytes: no two threads may write them.
    constexpr bool cuttable = thrust::is_contiguous_iterator_v<Output>;
    run("thrust::copy", ThrustWork::copy, [&] { parallelFor(items, cuttable ? pieceItems : items, copyPiece); });
    return result + count;
}

template <typename Input, typename Output>
Output copy(const Policy& policy, Input first, Input last, Output result) {
    return copy_n(policy, first, last - first, result);
}

/// Access to an element from outside the device: a copy of one.
template <typename Pointer>
typename thrust::iterator_value<Pointer>::type get_value(const Policy&, Pointer source) {
    typename thrust::iterator_value<Pointer>::type value;
    run("thrust::copy", ThrustWork::copy, [&] { value = *thrust::raw_pointer_cast(source); });
    return value;
}

template <typename Target, typename Source>
void assign_value(const Policy&, Target target, Source source) {
    run("thrust::copy", ThrustWork::copy,
        [&] { *thrust::raw_pointer_cast(target) = *thrust::raw_pointer_cast(source); });
}

/// Memory for what moves within a vector; null where there is none.
inline thrust::pointer<void, Policy> malloc(const Policy&, std::size_t bytes) {
    void* memory = nullptr;
    if (cudaMalloc(&memory, bytes) != cudaSuccess) cudaGetLastError();
    return thrust::pointer<void, Policy>(memory);
}

template <typename Pointer>
void free(const Policy&, Pointer memory) {
    if (cudaFree(thrust::raw_pointer_cast(memory)) != cudaSuccess) cudaGetLastError();
}

inline constexpr std::size_t reduceLanes = 64;
inline constexpr std::size_t reduceChunk = 4096;

/// `count` >= 1 values: every 64th one together, then the 64 results in order.
template <typename T, typename Iterator, typename Operation>
T reducePiece(Iterator first, std::size_t count, Operation operation) {
    if (count < 2 * reduceLanes) {
        T result = first[0];
        for (std::size_t i = 1; i < count; ++i) result = operation(result, T(first[i]));
        return result;
    }
    std::array<T, reduceLanes> lanes;
    std::copy_n(first, reduceLanes, lanes.begin());
    std::size_t done = reduceLanes;
    for (; done + reduceLanes <= count; done += reduceLanes) {
#pragma omp simd
        for (std::size_t i = 0; i < reduceLanes; ++i) lanes[i] = operation(lanes[i], T(first[done + i]));
    }
    for (std::size_t i = 0; done < count; ++done, ++i) lanes[i] = operation(lanes[i], T(first[done]));
    T result = lanes[0];
    for (std::size_t i = 1; i < reduceLanes; ++i) result = operation(result, lanes[i]);
    return result;
}

/// Also transform_reduce and inner_product. `operation` is associative up to rounding.
template <typename Iterator, typename T, typename Operation>
T reduce(const Policy&, Iterator first, Iterator last, T init, Operation operation) {
    const auto items = RawIterators::of(first);
    const auto count = static_cast<std::size_t>(last - first);
    const std::size_t chunks = (count + reduceChunk - 1) / reduceChunk;
    const auto results = std::make_unique<T[]>(chunks);
    const auto reduceChunks = [&](std::size_t begin, std::size_t end) {
        for (std::size_t c = begin; c < end; ++c) {
            const std::size_t done = c * reduceChunk;
            results[c] = reducePiece<T>(items + static_cast<std::ptrdiff_t>(done), std::min(reduceChunk, count - done),
                                        operation);
        }
    };
    constexpr std::size_t grain = 16;
    run("thrust::reduce", ThrustWork::launch, [&] { parallelFor(chunks, grain, reduceChunks); });
    for (std::size_t c = 0; c < chunks; ++c) init = operation(init, results[c]);
    return init;
}

}  // namespace zel::host::thrust_device

namespace zel::cuda {

/// Thrust on the current device, for what names no iterator of the device's. Not thrust::device, which here is the
/// host.
inline constexpr host::thrust_device::Policy thrustPolicy{};

}  // namespace zel::cuda
