#include "NonLocalMeansStages.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>
#include <vector>

#include "NonLocalMeans/CudaAmnlmBlocks.h"
#include "NonLocalMeans/CudaAmnlmDataOps.h"
#include "NonLocalMeans/CudaAmnlmFilter.h"
#include "NonLocalMeans/CudaAmnlmHFilter.h"
#include "NonLocalMeans/CudaAmnlmPCA.h"
#include "NonLocalMeans/CudaAmnlmRFFilter.h"
#include "NonLocalMeans/CudaAmnlmRPatches.h"
#include "NonLocalMeans/CudaAmnlmStats_CUDA.h"
#include "NonLocalMeans/DeviceVector.h"
#include "NonLocalMeans/ManifoldTree_CUDA.h"

namespace zel::bench {

namespace {

using namespace amnlm;

/// Milliseconds of the fastest of some runs.
template <typename Run>
double bestOf(const Run& run) {
    using Clock = std::chrono::steady_clock;
    double best = 0;
    for (int repetition = 0; repetition < 7; ++repetition) {
        const auto start = Clock::now();
        run();
        const double time = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        best = repetition == 0 ? time : std::min(best, time);
    }
    return best;
}

/// The parts of one manifold, on buffers of the shapes that the tree gives them.
class ManifoldParts {
public:
    ManifoldParts(const RkCUDAAMNLMData& block, const RkCUDAAMNLMData& patches, float rangeSigma, float spatialSigma)
        : block_(block),
          patches_(patches),
          factor_(downSamplingFactor(rangeSigma, spatialSigma)),
          rangeSigma_(rangeSigma / std::sqrt(2.0F)),
          coarseSigma_(spatialSigma / factor_) {}

    double splat() const {
        RkCUDAAMNLMData product = fine(1), both = fine(2), splatted = coarse(2);
        return bestOf([&] {
            multiplyData(block_, block_, product);
            concatData(product, block_, both);
            scaleData(std::move(both), splatted);
        });
    }
    double blur() const {
        RkCUDAAMNLMData splatted = coarse(2), eta = coarse(4), blurred = coarse(2);
        scaleData(patches_, eta);
        return bestOf([&] { rfFilter(std::move(splatted), eta, rangeSigma_, coarseSigma_, blurred); });
    }
    double slice() const {
        const RkCUDAAMNLMData blurred = coarse(2);
        RkCUDAAMNLMData channel = coarse(1), up = fine(1), sum = fine(1);
        return bestOf([&] {
            for (const int k : {0, 1}) {
                extractData(blurred, k, k + 1, channel);
                scaleData(std::move(channel), up);
                addProductData(block_, up, sum);
            }
        });
    }
    /// Without the kernels that weigh the patches and divide.
    double eta() const {
        const DeviceVector<bool> cluster(block_.elementCount(), true);
        RkCUDAAMNLMData top = coarse(4), topIn = coarse(4), masked = fine(1), bottom = coarse(1), bottomIn = coarse(1);
        return bestOf([&] {
            scaleData(patches_, top);
            exchangeData(top, topIn);
            hFilter(topIn, coarseSigma_, top);
            maskData(block_, cluster, masked);
            scaleData(std::move(masked), bottomIn);
            hFilter(bottomIn, coarseSigma_, bottom);
        });
    }

private:
    RkCUDAAMNLMData fine(int channels) const { return {block_.dims[0], block_.dims[1], block_.dims[2], channels}; }
    RkCUDAAMNLMData coarse(int channels) const {
        return {coarseExtent(block_.dims[0], factor_), coarseExtent(block_.dims[1], factor_),
                coarseExtent(block_.dims[2], factor_), channels};
    }

    const RkCUDAAMNLMData& block_;
    const RkCUDAAMNLMData& patches_;
    const float factor_, rangeSigma_, coarseSigma_;
};

}  // namespace

std::string nonLocalMeansStages(const HostImage& image, float rangeSigma, float spatialSigma) {
    constexpr unsigned radius = 2;
    constexpr float minimum = 0, maximum = 255, mean = 100;
    const auto extent = [&](int axis) { return static_cast<std::int32_t>(image.getDimension(axis)); };
    const std::int32_t nx = extent(0), ny = extent(1), nz = extent(2), side = 2 * radius + 1;
    const Region whole({0, 0, 0}, {nx - 1, ny - 1, nz - 1});
    const auto samples = static_cast<std::int32_t>(
        computeSampleSize(static_cast<std::uint64_t>(nx) * static_cast<std::uint64_t>(ny * nz), 95, 5, 50));
    RkCUDAAMNLMData sample(side, side, side, samples), eigenvectors(1, 4, side * side * side, 1);
    RkCUDAAMNLMData block(nz, ny, nx, 1), patches(nz, ny, nx, 4), result(nz, ny, nx, 1);

    const double sampling = bestOf([&] {
        estimateMeanIntensity(&image, 95);
        sampleRandomPatches(sample, &image, minimum, maximum, mean, radius, samples);
    });
    const double pca = bestOf([&] { computePcaEigenvectors(eigenvectors, sample, 4, 100); });
    const double reading = bestOf([&] { readBlock(&image, minimum, maximum, whole, block); });
    const double projection =
        bestOf([&] { projectPatches(block, eigenvectors, minimum, maximum, mean, radius, patches); });
    const double tree = bestOf([&] { adaptiveManifoldFilter(result, block, patches, rangeSigma, spatialSigma, 1); });
    const int manifolds = (1 << treeHeight(rangeSigma, spatialSigma)) - 1;
    const ManifoldParts part(block, patches, rangeSigma, spatialSigma);
    const double splat = manifolds * part.splat(), blur = manifolds * part.blur(), slice = manifolds * part.slice();
    const double eta = (manifolds - 1) * part.eta();
    char text[512];
    std::snprintf(
        text, sizeof text,
        "  stages, ms: sampling %.2f, PCA %.2f, reading %.2f, projection %.1f, tree of %d manifolds %.1f (splat %.1f, "
        "blur %.1f, slice %.1f, eta %.1f, rest %.1f)",
        sampling, pca, reading, projection, manifolds, tree, splat, blur, slice, eta,
        tree - splat - blur - slice - eta);
    return text;
}

}  // namespace zel::bench
