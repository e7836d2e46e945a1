#pragma once

#include <string>
#include <vector>

namespace zel::test {

/// An NPY file put together by hand. The header is one of version 1, padded to nothing in particular.
inline std::string npyBytes(const std::string& dictionary, const std::string& voxels) {
    std::string bytes("\x93NUMPY\x01\x00", 8);
    bytes += static_cast<char>(dictionary.size() % 256);
    bytes += static_cast<char>(dictionary.size() / 256);
    return bytes + dictionary + voxels;
}

/// "(3, 4, )": a shape as the headers have it.
inline std::string shapeText(const std::vector<std::size_t>& shape) {
    std::string text = "(";
    for (const std::size_t size : shape) text.append(std::to_string(size)).append(", ");
    return text + ")";
}

inline std::string npyBytes(const std::string& descr, const std::string& shape, const std::string& voxels,
                            bool isFortranOrder = false) {
    return npyBytes("{'descr': '" + descr + "', 'fortran_order': " + (isFortranOrder ? "True" : "False") +
                        ", 'shape': " + shape + ", }\n",
                    voxels);
}

/// The bytes of numbers as this machine has them.
template <typename T>
std::string rawBytes(const std::vector<T>& values) {
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T)};
}

}  // namespace zel::test
