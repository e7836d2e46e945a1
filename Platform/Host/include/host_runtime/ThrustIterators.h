#pragma once

#include <thrust/iterator/detail/device_system_tag.h>
#include <thrust/iterator/iterator_traits.h>
#include <thrust/iterator/transform_iterator.h>
#include <thrust/iterator/zip_iterator.h>
#include <thrust/tuple.h>
#include <thrust/type_traits/is_contiguous_iterator.h>

#include <cstddef>
#include <type_traits>
#include <utility>

namespace zel::host::thrust_device {

/// Turns iterators into those that work on the device goes through: over plain addresses, since access through a
/// device pointer is a call of its own.
struct RawIterators {
    template <typename Iterator>
    static auto of(const Iterator& iterator) {
        constexpr bool pointsToDevice = std::is_same_v<typename thrust::iterator_system<Iterator>::type, Policy>;
        static_assert(thrust::is_contiguous_iterator_v<Iterator> || !pointsToDevice,
                      "the host device does not know this kind of iterator over device memory");
        return thrust::detail::try_unwrap_contiguous_iterator(iterator);
    }

    template <typename Function, typename Iterator, typename Reference, typename Value>
    static auto of(const thrust::transform_iterator<Function, Iterator, Reference, Value>& iterator) {
        const auto base = of(iterator.base());
        return thrust::transform_iterator<Function, std::remove_const_t<decltype(base)>, Reference, Value>(
            base, iterator.functor());
    }

    template <typename Tuple>
    static auto of(const thrust::zip_iterator<Tuple>& iterator) {
        return [&]<std::size_t... index>(std::index_sequence<index...>) {
            return thrust::make_zip_iterator(of(thrust::get<index>(iterator.get_iterator_tuple()))...);
        }
        (std::make_index_sequence<thrust::tuple_size<Tuple>::value>());
    }
};

}  // namespace zel::host::thrust_device
