// The tree of manifolds over one block.

#include <gtest/gtest.h>
#include <tbb/global_control.h>

#include <cmath>
#include <cstdlib>

#include "NonLocalMeans/CudaAmnlmFilter.h"
#include "PlainAmnlm.h"

namespace zel::test {
namespace {

struct Block {
    Extents extents;  ///< (Z, Y, X, 1)
    std::vector<float> values;
    std::vector<float> patches;  ///< four channels
};

/// Steps with noise, and patches that go with them.
Block noisyBlock(const Extents& extents) {
    Block block{extents, uniformValues(extents, 0, 0.3f, 1), uniformValues(withChannels(extents, 4), -0.1f, 0.1f, 2)};
    for (std::size_t v = 0; v < block.values.size(); ++v) {
        const std::size_t x = v % extents[2];
        if (x % 8 < 4) block.values[v] += 0.6f;
        block.patches[4 * v] += x % 8 < 4 ? 0.3f : -0.2f;
        block.patches[4 * v + 1] += static_cast<float>(x) * 0.01f;
    }
    return block;
}

std::vector<float> filtered(const Block& block, float rangeSigma, float spatialSigma) {
    const AmnlmData values(block.extents, block.values), patches(withChannels(block.extents, 4), block.patches);
    AmnlmData result(block.extents);
    std::srand(1);
    amnlm::adaptiveManifoldFilter(result, values, patches, rangeSigma, spatialSigma, 1);
    return result.values();
}

/// The whole tree in double. It draws the random numbers that the filter draws.
class PlainTree {
public:
    PlainTree(const Block& block, double rangeSigma, double spatialSigma, double factor, int height)
        : extents_(block.extents),
          values_(block.values.begin(), block.values.end()),
          patches_(block.patches.begin(), block.patches.end()),
          rangeSigma_(rangeSigma),
          coarseSigma_(spatialSigma / factor),
          height_(height),
          numerator_(values_.size()),
          denominator_(values_.size()),
          nearest_(values_.size(), 1e30) {
        for (const std::size_t axis : {0, 1, 2})
            coarse_[axis] = std::max(1, static_cast<int>(std::floor(extents_[axis] / factor + 0.5)));
        std::srand(1);
        const Extents fine = withChannels(extents_, 4);
        node(plainHFilter(patches_, fine, spatialSigma), fine, std::vector<bool>(values_.size(), true), 1);
    }

    Values result() const {
        Values result;
        for (std::size_t v = 0; v < values_.size(); ++v) {
            const double mean = denominator_[v] > 0x1p-23 ? numerator_[v] / denominator_[v] : 0;
            const double share = std::exp(-0.5 * nearest_[v] / (rangeSigma_ * rangeSigma_));
            result.push_back(values_[v] + share * (mean - values_[v]));
        }
        return result;
    }

private:
    using Cluster = std::vector<bool>;

    void node(const Values& eta, const Extents& extents, const Cluster& cluster, int depth) {
        const Values fine = plainScaled(eta, extents, withChannels(extents_, 4));
        Values difference, splat, theta;
        for (std::size_t i = 0; i < patches_.size(); ++i) difference.push_back(patches_[i] - fine[i]);
        for (std::size_t v = 0; v < values_.size(); ++v) {
            double square = 0;
            for (std::size_t k = 0; k < 4; ++k) square += std::pow(difference[4 * v + k], 2);
            nearest_[v] = std::min(nearest_[v], square);
            const double weight = std::exp(-square / (rangeSigma_ * rangeSigma_));
            splat.insert(splat.end(), {weight * values_[v], weight});
            theta.push_back(1 - weight);
        }
        const Extents two = withChannels(coarse_, 2);
        const Values blurred = plainScaled(plainRFFilter(plainScaled(splat, withChannels(extents_, 2), two), two,
                                                         plainScaled(eta, extents, withChannels(coarse_, 4)),
                                                         rangeSigma_ / std::sqrt(2.0), coarseSigma_),
                                           two, withChannels(extents_, 2));
        for (std::size_t v = 0; v < values_.size(); ++v) {
            numerator_[v] += splat[2 * v + 1] * blurred[2 * v];
            denominator_[v] += splat[2 * v + 1] * blurred[2 * v + 1];
        }
        if (depth == height_) return;
        Cluster minus = negativeSide(difference, cluster), plus = cluster;
        for (std::size_t v = 0; v < cluster.size(); ++v) plus[v] = cluster[v] && !minus[v];
        const Extents child = withChannels(coarse_, 4);
        node(childEta(theta, minus), child, minus, depth + 1);
        node(childEta(theta, plus), child, plus, depth + 1);
    }

    static Cluster negativeSide(const Values& difference, const Cluster& cluster) {
        std::array<double, 4> start, direction{};
        for (double& s : start) s = static_cast<float>(std::rand() >> 16) / 32767.0f - 0.5f;
        const auto dot = [&](const std::array<double, 4>& with, std::size_t v) {
            double sum = 0;
            for (std::size_t k = 0; k < 4; ++k) sum += with[k] * difference[4 * v + k];
            return sum;
        };
        for (std::size_t v = 0; v < cluster.size(); ++v)
            for (std::size_t k = 0; k < 4; ++k) direction[k] += cluster[v] ? dot(start, v) * difference[4 * v + k] : 0;
        Cluster minus;
        for (std::size_t v = 0; v < cluster.size(); ++v) minus.push_back(cluster[v] && dot(direction, v) < 0);
        return minus;
    }

    Values childEta(const Values& theta, const Cluster& cluster) const {
        Values weights, weighted;
        for (std::size_t v = 0; v < theta.size(); ++v) {
            weights.push_back(cluster[v] ? theta[v] : 0);
            for (std::size_t k = 0; k < 4; ++k) weighted.push_back(weights[v] * patches_[4 * v + k]);
        }
        const auto smooth = [&](const Values& in, int channels) {
            const Extents to = withChannels(coarse_, channels);
            return plainHFilter(plainScaled(in, withChannels(extents_, channels), to), to, coarseSigma_);
        };
        Values eta = smooth(weighted, 4);
        const Values bottom = smooth(weights, 1);
        for (std::size_t i = 0; i < eta.size(); ++i)
            if (std::abs(eta[i]) > 0.0001) eta[i] /= bottom[i / 4];
        return eta;
    }

    Extents extents_, coarse_{};
    Values values_, patches_;
    double rangeSigma_, coarseSigma_;
    int height_;
    Values numerator_, denominator_, nearest_;
};

TEST(ManifoldFilterTest, IsTheMeanOverAllManifolds) {
    const struct {
        Extents extents;
        float rangeSigma, spatialSigma;
        int factor, height;
    } cases[] = {{{1, 14, 17, 1}, 0.3f, 4, 1, 4},
                 {{1, 21, 30, 1}, 0.2f, 16, 4, 5},
                 {{7, 9, 8, 1}, 0.25f, 9, 2, 4},
                 {{2, 9, 12, 1}, 1, 40, 8, 4}};
    for (const auto& [extents, rangeSigma, spatialSigma, factor, height] : cases) {
        SCOPED_TRACE(testing::Message() << testing::PrintToString(extents) << ", factor " << factor);
        const Block block = noisyBlock(extents);
        const Values expected = PlainTree(block, rangeSigma, spatialSigma, factor, height).result();
        expectNear(filtered(block, rangeSigma, spatialSigma), expected, 2e-5);
    }
}

// All patches are alike, so no direction dominates, and clusters are empty.
TEST(ManifoldFilterTest, ConstantsStay) {
    const Extents extents{3, 20, 33, 1};
    const std::size_t voxels = 3 * 20 * 33;
    for (const float spatialSigma : {4.0f, 20.0f}) {
        const Block block{extents, std::vector<float>(voxels, 0.4f), std::vector<float>(4 * voxels)};
        expectNear(filtered(block, 0.2f, spatialSigma), Values(voxels, 0.4), 1e-6);
    }
}

TEST(ManifoldFilterTest, HasTheSameBitsForEachNumberOfThreads) {
    const Block block = noisyBlock({1, 300, 400, 1});
    const auto onThreads = [&](std::size_t threads) {
        const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
        return filtered(block, 0.2f, 8);
    };
    EXPECT_EQ(onThreads(1), onThreads(2));
}

}  // namespace
}  // namespace zel::test
