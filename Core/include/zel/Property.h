#pragma once

#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "zel/Vector.h"
#include "zel/export.h"

namespace zel {

class ImageModel;

namespace detail {

/// The type of the numbers that a property holds.
template <typename T>
struct NumberIn {
    using type = T;
};
template <typename T>
struct NumberIn<Vector2<T>> {
    using type = T;
};
template <typename T>
struct NumberIn<Vector3<T>> {
    using type = T;
};

template <typename T>
inline constexpr T lowest = std::numeric_limits<T>::lowest();
template <typename T>
inline constexpr T highest = std::numeric_limits<T>::max();

}  // namespace detail

/// What a property takes. Nothing is said here of one that holds no numbers.
template <typename T>
struct Allowed {};

/// Numbers from `low` to `high`, each of several. Never infinite or no number.
template <typename T>
requires(std::is_arithmetic_v<T> && !std::is_same_v<T, bool>) struct Allowed<T> {
    T low = detail::lowest<T>;
    T high = detail::highest<T>;
    bool excludesLow = false;
    std::string_view unit{};  ///< in the plural; empty for a mere number

    constexpr bool contains(T value) const { return (excludesLow ? value > low : value >= low) && value <= high; }
};

/// The range in words that stand behind "a number": "from 1 to 9", "of at least 0", "above 0".
ZEL_API std::string toText(const Allowed<unsigned>& allowed);
ZEL_API std::string toText(const Allowed<double>& allowed);

/// A named parameter of an algorithm. It reads and is assigned like a plain value; what it takes is looked at when the
/// algorithm runs.
template <typename T>
class Property {
public:
    using Range = Allowed<typename detail::NumberIn<T>::type>;

    explicit Property(std::string_view name, T value = T{}, Range allowed = {})
        : name_(name), value_(std::move(value)), allowed_(allowed) {}

    const T& get() const { return value_; }
    operator T() const { return value_; }  // NOLINT(google-explicit-constructor): a property stands for its value

    Property& operator=(T value) {
        value_ = std::move(value);
        return *this;
    }
    /// Takes the value; a property keeps its own name and range.
    Property& operator=(const Property& other) { return *this = other.value_; }
    Property(const Property&) = delete;

    std::string_view name() const { return name_; }
    const Range& allowed() const { return allowed_; }

private:
    std::string_view name_;  // a literal
    T value_;
    Range allowed_;
};

using PropertyReadImage = Property<const ImageModel*>;
using PropertyWriteImage = Property<ImageModel*>;
/// One of several numbered ways of doing a thing.
using PropertySingleChoice = Property<int>;

/// The longest axis, mask or step: positions along a line, and NPP's fields, are signed 32-bit numbers.
inline constexpr unsigned maxLength = 2147483647;

/// What each component of a tile size takes where tiling is on.
inline constexpr Allowed<unsigned> tileLength{.low = 1};

}  // namespace zel
