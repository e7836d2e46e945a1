#include "CudaAmnlmFilter.h"

#include <thrust/fill.h>
#include <thrust/functional.h>
#include <thrust/transform.h>

#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "CudaAmnlmDataOps.h"
#include "CudaAmnlmEigenvec.h"
#include "CudaAmnlmHFilter.h"
#include "CudaAmnlmRFFilter.h"
#include "CudaUtils_CUDA.h"
#include "ManifoldTree_CUDA.h"
#include "ThrustPolicy.h"
#include "VoxelLaunch.h"
#include "lanes.h"

namespace amnlm {

using namespace zel::cuda;

/// A Gaussian of a squared distance.
struct phi_op {
    float variance;
    __device__ float operator()(float x) const { return laneExp(-0.5f * x / variance); }
};

template <typename T>
struct one_minus {
    __host__ __device__ T operator()(T x) const { return 1 - x; }
};

/// NaN is never on the minus side.
template <typename T>
struct kernBuildClusterMinus {
    __host__ __device__ bool operator()(T x, bool cluster) const { return cluster & (x < 0); }
};

template <typename T>
struct kernBuildClusterPlus {
    __host__ __device__ T operator()(T cluster, T minus) const { return cluster & !minus; }
};

/// Sums of squares, over the channels, of the difference between the patches and a manifold. The difference itself is
/// stored where it is kept.
template <bool keepsDifference>
__global__ void kernChannelsSquareSum(float* squares, float* difference, const float* patches, const float* manifold,
                                      int nx, int ny, int nz, int c) {
    withChannels(c, [=](const auto channels) {
        forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
            const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
            float sum = 0;
            for (int k = 0; k < channels; ++k) {
                const float d = patches[v * channels + k] - manifold[v * channels + k];
                if constexpr (keepsDifference) difference[v * channels + k] = d;
                sum += d * d;
            }
            squares[v] = sum;
        });
    });
}

__global__ void kernXDot(float* out, const float* in, const float* direction, int nx, int ny, int nz, int c) {
    withChannels(c, [=](const auto channels) {
        forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
            const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
            float sum = 0;
            for (int k = 0; k < channels; ++k) sum += direction[k] * in[v * channels + k];
            out[v] = sum;
        });
    });
}

__global__ void kernThetaTimesPatches(float* out, const float* theta, const float* patches, const bool* cluster, int nx,
                                      int ny, int nz, int c) {
    withChannels(c, [=](const auto channels) {
        forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
            const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
            const float weight = keepIf(cluster[v], theta[v]);
            for (int k = 0; k < channels; ++k) out[v * channels + k] = weight * patches[v * channels + k];
        });
    });
}

/// Where hardly any patch contributes, the numerator is not divided.
__global__ void kernComputeEta(float* out, const float* numerator, const float* denominator, int nx, int ny, int nz,
                               int c) {
    constexpr float smallest = 0.0001f;
    withChannels(c, [=](const auto channels) {
        forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
            const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
            for (int k = 0; k < channels; ++k) {
                const float q = numerator[v * channels + k];
                out[v * channels + k] = fabsf(q) > smallest ? q / denominator[v] : q;
            }
        });
    });
}

namespace {

using Mask = DeviceVector<bool>;

thrust::device_ptr<float> begin(RkCUDAAMNLMData& data) {
    return thrust::device_pointer_cast(data.data);
}
thrust::device_ptr<float> end(RkCUDAAMNLMData& data) {
    return begin(data) + static_cast<std::int64_t>(data.elementCount());
}

/// An image of the same extents along x, y and z with another number of channels.
RkCUDAAMNLMData like(const RkCUDAAMNLMData& image, std::int32_t channels) {
    return {image.dims[0], image.dims[1], image.dims[2], channels};
}

/// Launches a kernel with a thread for each voxel of `shape`; its extents and channels end the arguments.
template <typename... Parameters, typename... Arguments>
void launchVoxels(const RkCUDAAMNLMData& shape, void (*kernel)(Parameters...), Arguments... arguments) {
    const auto& [nz, ny, nx, channels] = shape.dims;
    const cudaLaunchConfig_t config = voxelLaunch(nx, ny, nz);
    cudaLaunchKernelEx(&config, kernel, arguments..., nx, ny, nz, channels);
}

/// Walks the tree of manifolds of one block, depth first. ManifoldMemory_CUDA.h knows what each step allocates.
class ManifoldTree {
public:
    ManifoldTree(RkCUDAAMNLMData& result, const RkCUDAAMNLMData& block, const RkCUDAAMNLMData& patchImage,
                 float rangeSigma, float spatialSigma, std::int32_t manifoldIterations)
        : result_(result),
          block_(block),
          patchImage_(patchImage),
          sigma_(rangeSigma / std::sqrt(2.0f)),
          spatialSigma_(spatialSigma),
          manifoldIterations_(manifoldIterations),
          height_(treeHeight(rangeSigma, spatialSigma)),
          factor_(downSamplingFactor(rangeSigma, spatialSigma)),
          coarseX_(coarseExtent(block.dims[2], factor_)),
          coarseY_(coarseExtent(block.dims[1], factor_)),
          coarseZ_(coarseExtent(block.dims[0], factor_)),
          numerator_(like(block, 1)),
          denominator_(like(block, 1)) {}

    void filter();

    RkCUDAAMNLMData& numerator() { return numerator_; }
    RkCUDAAMNLMData& denominator() { return denominator_; }

private:
    void filterManifoldNode(RkCUDAAMNLMData& eta, const Mask& cluster, int depth);
    void filterChildren(RkCUDAAMNLMData& theta, const Mask& cluster, int depth);
    Mask minusCluster(const Mask& cluster);
    void processManifold(RkCUDAAMNLMData& eta, RkCUDAAMNLMData& weights, bool hasChildren);
    void weigh(const RkCUDAAMNLMData& manifold, RkCUDAAMNLMData& weights, bool keepsDifference);
    void splat(RkCUDAAMNLMData& weights, RkCUDAAMNLMData& splatted) const;
    void slice(const RkCUDAAMNLMData& blurred, std::int32_t channel, const RkCUDAAMNLMData& weights,
               RkCUDAAMNLMData& sum) const;
    void computeEta(const RkCUDAAMNLMData& theta, const Mask& cluster, RkCUDAAMNLMData& eta) const;

    RkCUDAAMNLMData coarse(std::int32_t channels) const { return {coarseZ_, coarseY_, coarseX_, channels}; }
    std::int32_t channels() const { return patchImage_.dims[3]; }
    float coarseSigma() const { return spatialSigma_ / factor_; }

    RkCUDAAMNLMData& result_;  ///< smallest squared distance of each voxel to any manifold so far
    const RkCUDAAMNLMData& block_;
    const RkCUDAAMNLMData& patchImage_;
    const float sigma_;
    const float spatialSigma_;
    const std::int32_t manifoldIterations_;
    const int height_;
    const float factor_;
    const std::int32_t coarseX_, coarseY_, coarseZ_;
    RkCUDAAMNLMData numerator_;
    RkCUDAAMNLMData denominator_;
    /// Patches minus the last manifold that has children: one buffer for all nodes.
    std::optional<RkCUDAAMNLMData> difference_;
};

void ManifoldTree::filter() {
    RkCUDAAMNLMData rootEta = like(patchImage_, channels());
    hFilter(patchImage_, spatialSigma_, rootEta);
    difference_.emplace(patchImage_.dims[0], patchImage_.dims[1], patchImage_.dims[2], channels());
    const Mask cluster(block_.elementCount(), true);
    thrust::fill(thrustPolicy, begin(numerator_), end(numerator_), 0.0f);
    thrust::fill(thrustPolicy, begin(denominator_), end(denominator_), 0.0f);
    thrust::fill(thrustPolicy, begin(result_), end(result_), std::numeric_limits<float>::max());
    filterManifoldNode(rootEta, cluster, 1);
    difference_.reset();
}

void ManifoldTree::filterManifoldNode(RkCUDAAMNLMData& eta, const Mask& cluster, int depth) {
    RkCUDAAMNLMData weights = like(block_, 1);
    const bool hasChildren = depth < height_;
    processManifold(eta, weights, hasChildren);
    if (!hasChildren) return;
    thrust::transform(thrustPolicy, begin(weights), end(weights), begin(weights), one_minus<float>());
    filterChildren(weights, cluster, depth);
}

/// Each voxel of the cluster goes to one child. Their manifolds are made of its patches, each weighted by `theta`: by
/// how badly the parent's manifold served it.
void ManifoldTree::filterChildren(RkCUDAAMNLMData& theta, const Mask& cluster, int depth) {
    Mask childCluster = minusCluster(cluster);
    RkCUDAAMNLMData childEta = coarse(channels());
    computeEta(theta, childCluster, childEta);
    filterManifoldNode(childEta, childCluster, depth + 1);
    thrust::transform(thrustPolicy, cluster.begin(), cluster.end(), childCluster.begin(), childCluster.begin(),
                      kernBuildClusterPlus<bool>());
    computeEta(theta, childCluster, childEta);
    filterManifoldNode(childEta, childCluster, depth + 1);
}

Mask ManifoldTree::minusCluster(const Mask& cluster) {
    Mask minus(cluster.size(), false);
    DeviceVector<float> direction(static_cast<std::size_t>(channels()));
    computeDominantDirection(*difference_, cluster, manifoldIterations_, direction);
    ScratchVector<float> dots(cluster.size());
    launchVoxels(*difference_, kernXDot, thrust::raw_pointer_cast(dots.data()), difference_->data,
                 thrust::raw_pointer_cast(direction.data()));
    thrust::transform(thrustPolicy, dots.begin(), dots.end(), cluster.begin(), minus.begin(),
                      kernBuildClusterMinus<float>());
    return minus;
}

/// Uses up `eta`.
void ManifoldTree::processManifold(RkCUDAAMNLMData& eta, RkCUDAAMNLMData& weights, bool hasChildren) {
    const bool isFine = haveEqualExtents(eta, block_);
    RkCUDAAMNLMData otherEta = isFine ? coarse(channels()) : like(block_, channels());
    if (isFine) {
        weigh(eta, weights, hasChildren);
        scaleData(std::move(eta), otherEta);
    } else {
        scaleData(eta, otherEta);
        weigh(otherEta, weights, hasChildren);
    }
    const RkCUDAAMNLMData& coarseEta = isFine ? otherEta : eta;
    RkCUDAAMNLMData splatted = coarse(2);
    splat(weights, splatted);
    RkCUDAAMNLMData blurred = coarse(2);
    rfFilter(std::move(splatted), coarseEta, sigma_, coarseSigma(), blurred);
    slice(blurred, 0, weights, numerator_);
    slice(blurred, 1, weights, denominator_);
}

/// Weights each voxel by its distance to the manifold, and keeps the smallest distance.
void ManifoldTree::weigh(const RkCUDAAMNLMData& manifold, RkCUDAAMNLMData& weights, bool keepsDifference) {
    RkCUDAAMNLMData squares = like(block_, 1);
    const auto kernel = keepsDifference ? kernChannelsSquareSum<true> : kernChannelsSquareSum<false>;
    launchVoxels(patchImage_, kernel, squares.data, difference_->data, patchImage_.data, manifold.data);
    thrust::transform(thrustPolicy, begin(squares), end(squares), begin(weights), phi_op{sigma_ * sigma_});
    thrust::transform(thrustPolicy, begin(squares), end(squares), begin(result_), begin(result_),
                      thrust::minimum<float>());
}

/// Channel 0 is the weighted image, channel 1 the weight.
void ManifoldTree::splat(RkCUDAAMNLMData& weights, RkCUDAAMNLMData& splatted) const {
    RkCUDAAMNLMData product = like(block_, 1);
    multiplyData(weights, block_, product);
    RkCUDAAMNLMData both = like(block_, 2);
    concatData(product, weights, both);
    scaleData(std::move(both), splatted);
}

void ManifoldTree::slice(const RkCUDAAMNLMData& blurred, std::int32_t channel, const RkCUDAAMNLMData& weights,
                         RkCUDAAMNLMData& sum) const {
    RkCUDAAMNLMData extracted = coarse(1);
    extractData(blurred, channel, channel + 1, extracted);
    RkCUDAAMNLMData fine = like(block_, 1);
    scaleData(std::move(extracted), fine);
    addProductData(weights, fine, sum);
}

void ManifoldTree::computeEta(const RkCUDAAMNLMData& theta, const Mask& cluster, RkCUDAAMNLMData& eta) const {
    RkCUDAAMNLMData top = coarse(channels());
    {
        RkCUDAAMNLMData fine = like(patchImage_, channels());
        launchVoxels(patchImage_, kernThetaTimesPatches, fine.data, theta.data, patchImage_.data,
                     thrust::raw_pointer_cast(cluster.data()));
        scaleData(std::move(fine), top);
    }
    {
        RkCUDAAMNLMData topCopy = coarse(channels());
        exchangeData(top, topCopy);
        hFilter(topCopy, coarseSigma(), top);
    }
    RkCUDAAMNLMData bottom = coarse(1);
    {
        RkCUDAAMNLMData masked = like(theta, 1);
        maskData(theta, cluster, masked);
        RkCUDAAMNLMData bottomIn = coarse(1);
        scaleData(std::move(masked), bottomIn);
        hFilter(bottomIn, coarseSigma(), bottom);
    }
    launchVoxels(eta, kernComputeEta, eta.data, top.data, bottom.data);
}

}  // namespace

void adaptiveManifoldFilter(RkCUDAAMNLMData& result, const RkCUDAAMNLMData& block, const RkCUDAAMNLMData& patchImage,
                            float rangeSigma, float spatialSigma, std::int32_t manifoldIterations) {
    ManifoldTree tree(result, block, patchImage, rangeSigma, spatialSigma, manifoldIterations);
    tree.filter();
    RkCUDAAMNLMData& mean = tree.numerator();
    RkCUDAAMNLMData& share = tree.denominator();
    divideData(mean, share, mean);
    thrust::transform(thrustPolicy, begin(result), end(result), begin(share), phi_op{rangeSigma * rangeSigma});
    // A voxel that is far from every manifold keeps its value.
    subtractData(mean, block, result);
    multiplyData(share, result, result);
    addData(block, result, result);
}

}  // namespace amnlm
