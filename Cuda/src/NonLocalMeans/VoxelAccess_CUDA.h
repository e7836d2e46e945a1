#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <tuple>

#include "FloatToInteger.h"
#include "Helper/raise.h"
#include "Utilities_CUDA/RowFailure_CUDA.h"
#include "zel/ImageModel.h"

// How the filter's sources read and write voxels.
namespace amnlm {

/// Calls body.operator()<T>() with the image's voxel type.
/// @throws UnexpectedError from `source` for a type that is not one of the kernels'.
template <typename Body>
void withVoxelType(const zel::ImageModel& image, const char* source, const Body& body) {
    if (!zel::visitVoxelType(image.getDataType(), zel::KernelTypes{}, body))
        zel::raise<zel::UnexpectedError>(source, __LINE__, "Unsupported primitive type");
}

/// Intensity `value` of an image's range, brought to 0 ... 1. An image without contrast gives NaN.
inline float scaledIntensity(float value, float minimum, float maximum) {
    return (value - minimum) / (maximum - minimum) + 0.0f;  // + 0 turns -0 into 0
}

/// A float as a voxel: integers are truncated toward zero and keep their low bits, nothing is clamped.
template <typename T>
T voxelOf(float value) {
    if constexpr (std::is_floating_point_v<T>)
        return value;
    else if constexpr (std::is_same_v<T, std::uint32_t>)
        return static_cast<T>(zel::truncateTo<std::int64_t>(value));  // all its values are beyond 32 signed bits
    else
        return static_cast<T>(zel::truncateToInt32(value));
}

/// Collects, from several threads, rows that could not be read or written.
class FailedRows {
public:
    void add(std::size_t x, std::size_t y, std::size_t z) {
        const std::lock_guard lock(mutex_);
        const Row row{z, y, x};
        if (!lowest_ || row < *lowest_) lowest_ = row;
    }

    /// @param action  "read" or "write".
    /// @throws RuntimeError naming the lowest row that was added; without one it does nothing.
    void raiseIfAny(const char* action, const zel::ImageModel& image) const {
        if (!lowest_) return;
        const auto [z, y, x] = *lowest_;
        zel::cuda::raiseRowFailure(action, image, {x, y, z, 0, 0});
    }

private:
    using Row = std::tuple<std::size_t, std::size_t, std::size_t>;  // z, y, x

    std::mutex mutex_;
    std::optional<Row> lowest_;
};

}  // namespace amnlm
