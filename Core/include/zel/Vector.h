#pragma once

namespace zel {

/// Two numbers, along x and y.
template <typename T>
struct Vector2 {
    T x{};
    T y{};

    bool operator==(const Vector2&) const = default;
};

/// Three numbers, along x, y and z.
template <typename T>
struct Vector3 {
    T x{};
    T y{};
    T z{};

    bool operator==(const Vector3&) const = default;
};

}  // namespace zel
