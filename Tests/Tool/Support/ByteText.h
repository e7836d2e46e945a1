#pragma once

#include <complex>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace zel::test {

/// A whole number as a file of either byte order has it.
inline std::string numberBytes(std::uint64_t value, std::size_t size, bool isLittle) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += static_cast<char>(value >> 8 * (isLittle ? i : size - 1 - i));
    return text;
}

/// The same for a voxel of any type.
template <typename T>
std::string voxelBytes(T value, bool isLittle) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return numberBytes(bits, sizeof value, isLittle);
}
template <typename T>
std::string voxelBytes(std::complex<T> value, bool isLittle) {
    return voxelBytes(value.real(), isLittle) + voxelBytes(value.imag(), isLittle);
}

/// The bytes of numbers as this machine has them.
template <typename T>
std::string rawBytes(const std::vector<T>& values) {
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T)};
}

/// An NPY file of version 1 put together by hand, its header not padded.
inline std::string npyBytes(const std::string& dictionary, const std::string& voxels) {
    return std::string("\x93NUMPY\x01\x00", 8) + numberBytes(dictionary.size(), 2, true) + dictionary + voxels;
}
/// @param shape  as Python has it: "(3, 4)".
inline std::string npyBytes(const std::string& descr, const std::string& shape, const std::string& voxels,
                            const std::string& isFortranOrder = "False") {
    const std::string order = "', 'fortran_order': " + isFortranOrder;
    return npyBytes("{'descr': '" + descr + order + ", 'shape': " + shape + ", }\n", voxels);
}

}  // namespace zel::test
