#pragma once

#include <array>
#include <cstddef>

namespace tarnway {

/// A square matrix that acts on column vectors.
template <typename T, std::size_t N>
class Matrix {
public:
    /// All elements 0.
    constexpr Matrix() = default;

    static constexpr Matrix identity() {
        Matrix result;
        for (std::size_t i = 0; i < N; ++i) result.setAt(i, i, T{1});
        return result;
    }

    constexpr void setAt(std::size_t row, std::size_t column, T value) { values_[row * N + column] = value; }
    constexpr T at(std::size_t row, std::size_t column) const { return values_[row * N + column]; }

    bool operator==(const Matrix&) const = default;

private:
    std::array<T, N * N> values_{};
};

}  // namespace tarnway
