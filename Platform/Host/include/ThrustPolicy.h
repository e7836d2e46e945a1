#pragma once

#include <thrust/detail/function.h>
#include <thrust/for_each.h>
#include <thrust/reduce.h>
#include <thrust/system/tbb/execution_policy.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "host_runtime/Parallel.h"

namespace zel::cuda {

/// Thrust on the threads of the host device. Sums are taken in an order that depends on their length alone, so that a
/// result has the same bits in every run and for every number of threads.
struct ThrustPolicy : thrust::system::tbb::detail::execution_policy<ThrustPolicy> {};
inline constexpr ThrustPolicy thrustPolicy{};

namespace detail {

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

}  // namespace detail

/// Found by thrust::reduce through its policy, and so by transform_reduce and inner_product too. `operation` is
/// associative up to rounding.
template <typename Iterator, typename T, typename Operation>
T reduce(const ThrustPolicy&, Iterator first, Iterator last, T init, Operation operation) {
    constexpr std::size_t chunk = detail::reduceChunk;
    const auto count = static_cast<std::size_t>(last - first);
    const std::size_t chunks = (count + chunk - 1) / chunk;
    const auto reduceOne = [&](std::size_t c) {
        const auto begin = first + static_cast<std::ptrdiff_t>(c * chunk);
        return detail::reducePiece<T>(begin, std::min(chunk, count - c * chunk), operation);
    };
    constexpr std::size_t fewChunks = 4;  // not worth waking other threads
    if (chunks <= fewChunks) {
        for (std::size_t c = 0; c < chunks; ++c) init = operation(init, reduceOne(c));
        return init;
    }
    std::vector<T> results(chunks);
    constexpr std::size_t grain = 16;
    host::parallelFor(chunks, grain, [&](std::size_t begin, std::size_t end) {
        for (std::size_t c = begin; c < end; ++c) results[c] = reduceOne(c);
    });
    for (const T& result : results) init = operation(init, result);
    return init;
}

/// What Thrust's element-wise algorithms (transform, fill, ...) come down to.
template <typename Iterator, typename Size, typename Function>
Iterator for_each_n(const ThrustPolicy&, Iterator first, Size count, Function function) {
    const thrust::detail::wrapped_function<Function, void> call(function);
    constexpr std::size_t grain = 16384;
    host::parallelFor(static_cast<std::size_t>(count), grain, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) call(*(first + static_cast<std::ptrdiff_t>(i)));
    });
    return first + count;
}

template <typename Iterator, typename Function>
Iterator for_each(const ThrustPolicy& policy, Iterator first, Iterator last, Function function) {
    return for_each_n(policy, first, last - first, function);
}

}  // namespace zel::cuda
