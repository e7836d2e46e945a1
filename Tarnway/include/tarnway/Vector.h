#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace tarnway {

/// A vector of N numbers.
template <typename T, std::size_t N>
class Vector {
public:
    constexpr Vector() = default;
    template <typename... Values>
    requires(sizeof...(Values) == N) constexpr explicit Vector(Values... values) : values_{static_cast<T>(values)...} {}

    constexpr T& operator[](std::size_t index) { return values_[index]; }
    constexpr const T& operator[](std::size_t index) const { return values_[index]; }
    static constexpr std::size_t size() { return N; }

    bool operator==(const Vector&) const = default;

private:
    std::array<T, N> values_{};
};

/// A vector whose length is known when the program runs; all 0 at first.
template <typename T>
class VectorX {
public:
    explicit VectorX(std::size_t size) : values_(size) {}

    T& operator[](std::size_t index) { return values_[index]; }
    const T& operator[](std::size_t index) const { return values_[index]; }
    std::size_t size() const { return values_.size(); }

    bool operator==(const VectorX&) const = default;

private:
    std::vector<T> values_;
};

}  // namespace tarnway
