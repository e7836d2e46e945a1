#pragma once

#include <cstdint>
#include <vector>

namespace amnlm {

/// An array of floats on the current device with four extents; all device data of the filter but masks and vectors.
///
/// | Content                    | Extents      | Element                                             |
/// |----------------------------|--------------|-----------------------------------------------------|
/// | images and their channels  | (Z, Y, X, C) | (z, y, x, c) at ((z * Y + y) * X + x) * C + c       |
/// | sampled patches of side w  | (w, w, w, N) | value p of sample n at n * w^3 + p, x fastest in p  |
/// | eigenvectors               | (1, D, P, 1) | value p of direction k at k * P + p                 |
///
/// Operations take it by reference; its memory stays until it goes out of scope.
class RkCUDAAMNLMData {
public:
    /// Allocates the memory without initialising it. A failure resets the device and raises RuntimeError.
    RkCUDAAMNLMData(std::int32_t d0, std::int32_t d1, std::int32_t d2, std::int32_t d3);
    virtual ~RkCUDAAMNLMData();
    RkCUDAAMNLMData(const RkCUDAAMNLMData&) = delete;
    RkCUDAAMNLMData& operator=(const RkCUDAAMNLMData&) = delete;

    /// All extents multiplied.
    std::uint64_t elementCount() const;
    std::uint64_t byteSize() const { return elementCount() * sizeof(float); }

    /// One blocking copy of all elements; `host` holds as many. A failure resets the device and raises RuntimeError.
    void upload(const std::vector<float>& host);
    void download(std::vector<float>& host) const;

    std::int32_t dims[4];
    float* data = nullptr;
};

}  // namespace amnlm
