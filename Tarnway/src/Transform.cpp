#include "tarnway/Transform.h"

#include <cmath>
#include <stdexcept>

namespace tarnway {

namespace {

constexpr std::size_t n = 4;

/// Determinant of what is left without a row and a column, with the sign of its place.
double cofactor(const Transform& m, std::size_t row, std::size_t column) {
    std::array<std::size_t, 3> r{};
    std::array<std::size_t, 3> c{};
    for (std::size_t i = 0, k = 0; i < n; ++i) {
        if (i != row) r[k++] = i;
    }
    for (std::size_t i = 0, k = 0; i < n; ++i) {
        if (i != column) c[k++] = i;
    }
    const auto minor2 = [&](std::size_t p, std::size_t q) {
        return m.at(r[1], c[p]) * m.at(r[2], c[q]) - m.at(r[1], c[q]) * m.at(r[2], c[p]);
    };
    const double minor =
        m.at(r[0], c[0]) * minor2(1, 2) - m.at(r[0], c[1]) * minor2(0, 2) + m.at(r[0], c[2]) * minor2(0, 1);
    return (row + column) % 2 == 0 ? minor : -minor;
}

}  // namespace

Transform translation(const Point& offset) {
    Transform result = Transform::identity();
    for (std::size_t i = 0; i < 3; ++i) result.setAt(i, 3, offset[i]);
    return result;
}

Transform operator*(const Transform& a, const Transform& b) {
    Transform product;
    for (std::size_t row = 0; row < n; ++row) {
        for (std::size_t column = 0; column < n; ++column) {
            double sum = 0;
            for (std::size_t k = 0; k < n; ++k) sum += a.at(row, k) * b.at(k, column);
            product.setAt(row, column, sum);
        }
    }
    return product;
}

Transform inverse(const Transform& transform) {
    double determinant = 0;
    for (std::size_t k = 0; k < n; ++k) determinant += transform.at(0, k) * cofactor(transform, 0, k);
    if (determinant == 0 || !std::isfinite(determinant)) {
        throw std::invalid_argument("a transform without an inverse: its determinant is " +
                                    std::to_string(determinant));
    }
    Transform result;
    for (std::size_t row = 0; row < n; ++row) {
        for (std::size_t column = 0; column < n; ++column) {
            result.setAt(column, row, cofactor(transform, row, column) / determinant);
        }
    }
    return result;
}

Point operator*(const Transform& transform, const Point& point) {
    std::array<double, n> result{};
    for (std::size_t row = 0; row < n; ++row) {
        result[row] = transform.at(row, 0) * point[0] + transform.at(row, 1) * point[1] +
                      transform.at(row, 2) * point[2] + transform.at(row, 3);
    }
    return Point(result[0] / result[3], result[1] / result[3], result[2] / result[3]);
}

}  // namespace tarnway
