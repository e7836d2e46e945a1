#pragma once

#include <array>
#include <random>
#include <vector>

#include "NonLocalMeans/CudaAmnlmData.h"

namespace zel::test {

/// The filter's device data with the values that it starts from or ends as.
class AmnlmData : public amnlm::RkCUDAAMNLMData {
public:
    using Extents = std::array<int, 4>;

    explicit AmnlmData(const Extents& e) : RkCUDAAMNLMData(e[0], e[1], e[2], e[3]) {}
    AmnlmData(const Extents& extents, const std::vector<float>& values) : AmnlmData(extents) { upload(values); }

    std::vector<float> values() const {
        std::vector<float> result(elementCount());
        download(result);
        return result;
    }
};

inline AmnlmData::Extents withChannels(const AmnlmData::Extents& extents, int channels) {
    return {extents[0], extents[1], extents[2], channels};
}

inline std::vector<float> uniformValues(std::size_t count, float low, float high, unsigned int seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(low, high);
    std::vector<float> values(count);
    for (float& v : values) v = value(random);
    return values;
}
inline std::vector<float> uniformValues(const AmnlmData::Extents& e, float low, float high, unsigned int seed) {
    return uniformValues(static_cast<std::size_t>(e[0]) * e[1] * e[2] * e[3], low, high, seed);
}

}  // namespace zel::test
