#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#ifdef __AVX__
#include <immintrin.h>
#endif

#include "Device/Sanitizers.h"

namespace zel::host {

/// How a filter's results go to memory.
enum class Stores {
    cached,
    /// Past the caches: without reading the lines that are written beforehand, and without throwing out others. Good
    /// where a result would be out of the caches anyway before somebody reads it. Ended by endStreaming().
    streamed,
};

/// @param bytes  of all that a filter reads and writes.
inline Stores storesFor(std::size_t bytes) {
    // What a last-level cache holds for one user. Its size as the system tells it may be that of many users together.
    constexpr std::size_t cacheBytes = std::size_t{32} << 20;
    // The sanitizers do not see streaming stores.
    const bool stream = bytes > cacheBytes && !underAddressSanitizer && !underThreadSanitizer;
    return stream ? Stores::streamed : Stores::cached;
}

/// dst[i] = item(i) for i below `count`.
template <typename T, typename Item>
[[gnu::always_inline]] inline void storeLine([[maybe_unused]] Stores stores, T* __restrict dst, std::ptrdiff_t count,
                                             const Item& item) {
    std::ptrdiff_t i = 0;
#ifdef __AVX__
    if (stores == Stores::streamed) {
        constexpr std::ptrdiff_t bytes = 64, items = bytes / sizeof(T), vector = sizeof(__m256i);
        const auto address = reinterpret_cast<std::uintptr_t>(dst);
        const auto unaligned = static_cast<std::ptrdiff_t>(-address % bytes / sizeof(T));
        for (const std::ptrdiff_t head = std::min(count, unaligned); i < head; ++i) dst[i] = item(i);
        for (; i + items <= count; i += items) {
            alignas(bytes) T line[items];
#pragma omp simd
            for (std::ptrdiff_t k = 0; k < items; ++k) line[k] = item(i + k);
            for (std::ptrdiff_t k = 0; k < items; k += vector / sizeof(T)) {
                _mm256_stream_si256(reinterpret_cast<__m256i*>(dst + i + k),
                                    *reinterpret_cast<const __m256i*>(line + k));
            }
        }
    }
#endif
#pragma omp simd
    for (std::ptrdiff_t k = i; k < count; ++k) dst[k] = item(k);
}

/// Before other threads read what was streamed.
inline void endStreaming() {
#ifdef __AVX__
    _mm_sfence();
#endif
}

}  // namespace zel::host
