#include "CudaAmnlmPCA.h"

#include <thrust/copy.h>
#include <thrust/fill.h>
#include <thrust/functional.h>
#include <thrust/inner_product.h>
#include <thrust/transform.h>
#include <thrust/transform_reduce.h>

#include <cmath>
#include <utility>

#include "CudaUtils_CUDA.h"
#include "Helper/raise.h"
#include "NonLocalMeans/DeviceVector.h"
#include "ThrustPolicy.h"
#include "VectorFunctors.h"
#include "VoxelLaunch.h"
#include "lanes.h"

namespace amnlm {

using namespace zel::cuda;

__global__ void kern_patch_mean(float* patchMean, const float* patches, int P, int N) {
    forEachItemBundle(P, 0, P, [=](const auto bundle) {
        auto sum = bundle.fill(0.0f);
        for (std::int64_t n = 0; n < N; ++n)
            bundle.each([&](unsigned int lane) { sum[lane] += patches[n * P + bundle.first + lane]; });
        bundle.each([&](unsigned int lane) { patchMean[bundle.first + lane] = sum[lane] / static_cast<float>(N); });
    });
}

__global__ void kern_patch_mean_product(float* meanProduct, const float* patchMean, int P, int i) {
    float* const row = meanProduct + std::int64_t{i} * P;
    forEachItem(P, [=](std::uint64_t p) { row[p] = patchMean[p] * patchMean[i]; });
}

__global__ void kern_dot(float* covariance, const float* patches, int P, int N, int i) {
    forEachItemBundle(P, 0, P, [=](const auto bundle) {
        auto sum = bundle.fill(0.0f);
        for (std::int64_t n = 0; n < N; ++n) {
            const float other = patches[n * P + i];
            bundle.each([&](unsigned int lane) { sum[lane] += patches[n * P + bundle.first + lane] * other; });
        }
        float* const row = covariance + std::int64_t{i} * P + bundle.first;
        bundle.each([&](unsigned int lane) { row[lane] = sum[lane] / static_cast<float>(N); });
    });
}

__global__ void kern_minus(float* a, const float* b, int n) {
    forEachItem(n, [=](std::uint64_t j) { a[j] = a[j] - b[j]; });
}

__global__ void kern_matrix_mult(float* next, const float* current, const float* covariance, int P, int k) {
    forEachItemBundle(P, 0, P, [=](const auto bundle) {
        auto sum = bundle.fill(0.0f);
        for (std::int64_t q = 0; q < P; ++q) {
            const float element = current[std::int64_t{k} * P + q];
            bundle.each([&](unsigned int lane) { sum[lane] += covariance[q * P + bundle.first + lane] * element; });
        }
        float* const row = next + std::int64_t{k} * P + bundle.first;
        bundle.each([&](unsigned int lane) { row[lane] = sum[lane]; });
    });
}

__device__ __forceinline__ int wrapped(int position, int extent) {
    const int remainder = position % extent;
    return remainder < 0 ? remainder + extent : remainder;
}

template <int directions>
__global__ void kernGenerateProjPatches(float* patchImage, const float* block, const float* eigenvectors, int X, int Y,
                                        int Z, int radius, float scaledMean, std::uint64_t offset) {
    const std::uint64_t plane = static_cast<std::uint64_t>(X) * Y;
    const int width = 2 * radius + 1, P = width * width * width;
    const float variance = 0.5f * static_cast<float>(radius);
    const Tabulated weightAt(3 * radius * radius + 1, [=](int squaredDistance) {
        return expf(-0.5f * static_cast<float>(squaredDistance) / variance);
    });
    forEachItemBundle(plane * Z, offset, X, [&](const auto bundle) {
        const int x = static_cast<int>(bundle.first % X), y = static_cast<int>(bundle.first / X % Y);
        const int z = static_cast<int>(bundle.first / plane);
        ChannelSums<std::decay_t<decltype(bundle)>, directions> sums(bundle, patchImage);
        int q = 0;
        for (int dz = -radius; dz <= radius; ++dz) {
            for (int dy = -radius; dy <= radius; ++dy) {
                const float* const line =
                    block + wrapped(z + dz, Z) * plane + std::uint64_t{1} * wrapped(y + dy, Y) * X;
                const PeriodicRow row(bundle, line, x, X, radius);
                for (int dx = -radius; dx <= radius; ++dx, ++q) {
                    const float weight = weightAt(dx * dx + dy * dy + dz * dz);
                    float direction[directions];
                    for (int k = 0; k < directions; ++k) direction[k] = eigenvectors[std::int64_t{k} * P + q];
                    bundle.each([&](unsigned int lane) {
                        const float value = weight * (row(lane, dx) - scaledMean);
                        for (int k = 0; k < directions; ++k) sums(k, lane) += value * direction[k];
                    });
                }
            }
        }
    });
}

namespace {

using Vector = DeviceVector<float>;

cudaLaunchConfig_t itemLaunch(int count) {
    cudaLaunchConfig_t config{};
    config.gridDim = dim3(blocksOf8(count));
    config.blockDim = dim3(8);
    return config;
}

float* elements(Vector& vector, std::int64_t first = 0) {
    return thrust::raw_pointer_cast(vector.data()) + first;
}

/// E[x xT] less the product of the means, of `count` patches of P voxels: row i at i * P.
Vector covarianceOf(const RkCUDAAMNLMData& patches, int P, int count) {
    const auto size = static_cast<std::size_t>(P) * static_cast<std::size_t>(P);
    const cudaLaunchConfig_t config = itemLaunch(P);
    Vector covariance(size, 0.0f), meanProduct(size, 0.0f);
    {
        Vector patchMean(static_cast<std::size_t>(P), 0.0f);
        cudaLaunchKernelEx(&config, kern_patch_mean, elements(patchMean), patches.data, P, count);
        for (int i = 0; i < P; ++i) {
            cudaLaunchKernelEx(&config, kern_patch_mean_product, elements(meanProduct), elements(patchMean), P, i);
            checkCudaFatal(cudaDeviceSynchronize());
        }
    }
    for (int i = 0; i < P; ++i) {
        cudaLaunchKernelEx(&config, kern_dot, elements(covariance), patches.data, P, count, i);
        checkCudaFatal(cudaDeviceSynchronize());
    }
    for (int i = 0; i < P; ++i) {
        const std::int64_t row = std::int64_t{i} * P;
        cudaLaunchKernelEx(&config, kern_minus, elements(covariance, row), elements(meanProduct, row), P);
        checkCudaFatal(cudaDeviceSynchronize());
    }
    return covariance;
}

/// Gram-Schmidt: each direction free of those before it, of length 1 (or 0), its first element not negative.
void orthonormalise(Vector& directions, int P, int count) {
    for (int k = 0; k < count; ++k) {
        const auto first = directions.begin() + std::int64_t{k} * P, last = first + P;
        for (int j = 0; j < k; ++j) {
            const auto other = directions.begin() + std::int64_t{j} * P;
            const float dot = thrust::inner_product(thrustPolicy, first, last, other, 0.0f);
            thrust::transform(thrustPolicy, other, other + P, first, first, saxpy_functor<float>{-dot});
        }
        const float squares =
            thrust::transform_reduce(thrustPolicy, first, last, square_functor<float>(), 0.0f, thrust::plus<float>());
        const float length = std::sqrt(squares);
        float factor = length == 0 ? 1.0f : 1 / length;
        const float leading = *first;
        if (leading < 0) factor = -factor;
        thrust::transform(thrustPolicy, first, last, first, sscal_functor<float>{factor});
    }
}

template <int directions>
void launchProjection(const RkCUDAAMNLMData& block, const RkCUDAAMNLMData& eigenvectors, int radius, float scaledMean,
                      RkCUDAAMNLMData& patchImage) {
    constexpr unsigned int threads = 512;
    const auto& [Z, Y, X, channels] = block.dims;
    const auto voxels = static_cast<std::uint64_t>(Z) * Y * X;
    const auto P = static_cast<std::uint64_t>(eigenvectors.dims[2]);
    cudaLaunchConfig_t config{};
    config.gridDim = dim3(static_cast<unsigned int>(((voxels - 1 + P) / P + threads - 1) / threads));
    config.blockDim = dim3(threads);
    const std::uint64_t step = std::uint64_t{config.gridDim.x} * threads;
    for (std::uint64_t offset = 0; offset < voxels; offset += step) {
        cudaLaunchKernelEx(&config, kernGenerateProjPatches<directions>, patchImage.data, block.data, eigenvectors.data,
                           X, Y, Z, radius, scaledMean, offset);
        checkCudaFatal(cudaDeviceSynchronize());
    }
}

}  // namespace

bool computePcaEigenvectors(RkCUDAAMNLMData& eigenvectors, const RkCUDAAMNLMData& patches, std::int32_t dimensions,
                            std::int32_t iterationLimit) {
    constexpr float converged = 0.001f;
    const int P = patches.dims[0] * patches.dims[1] * patches.dims[2];
    const int all = dimensions * P;
    const auto size = static_cast<std::size_t>(all);
    Vector covariance = covarianceOf(patches, P, patches.dims[3]);
    Vector current = covariance;
    current.resize(size, 0.0f);
    Vector previous(size, 0.0f);
    const cudaLaunchConfig_t config = itemLaunch(P), allConfig = itemLaunch(all);
    std::int32_t turn = 0;
    for (; turn < iterationLimit; ++turn) {
        orthonormalise(current, P, dimensions);
        Vector change = current;
        cudaLaunchKernelEx(&allConfig, kern_minus, elements(change), elements(previous), all);
        float moved = 0;
        for (int k = 0; k < dimensions; ++k) {
            const auto first = change.begin() + std::int64_t{k} * P;
            moved += thrust::inner_product(thrustPolicy, first, first + P, first, 0.0f);
        }
        if (moved < converged) break;
        for (int k = 0; k < dimensions; ++k) {
            cudaLaunchKernelEx(&config, kern_matrix_mult, elements(previous), elements(current), elements(covariance),
                               P, k);
            checkCudaFatal(cudaDeviceSynchronize());
        }
        previous.swap(current);
    }
    checkCudaFatal(cudaMemcpy(eigenvectors.data, elements(current), eigenvectors.byteSize(), cudaMemcpyDeviceToDevice));
    return turn < iterationLimit;
}

void projectPatches(const RkCUDAAMNLMData& block, const RkCUDAAMNLMData& eigenvectors, float minimum, float maximum,
                    float mean, unsigned patchRadius, RkCUDAAMNLMData& patchImage) {
    const auto target = thrust::device_pointer_cast(patchImage.data);
    thrust::fill(thrustPolicy, target, target + static_cast<std::int64_t>(patchImage.elementCount()), 0.0f);
    const float scaledMean = (mean - minimum) / (maximum - minimum) + 0.0f;
    const int radius = static_cast<int>(patchRadius);
    switch (eigenvectors.dims[1]) {
        case 1:
            return launchProjection<1>(block, eigenvectors, radius, scaledMean, patchImage);
        case 2:
            return launchProjection<2>(block, eigenvectors, radius, scaledMean, patchImage);
        case 3:
            return launchProjection<3>(block, eigenvectors, radius, scaledMean, patchImage);
        case 4:
            return launchProjection<4>(block, eigenvectors, radius, scaledMean, patchImage);
        default:
            zel::raise<zel::UnexpectedError>("Cuda/src/NonLocalMeans/CudaAmnlmPCA", __LINE__, eigenvectors.dims[1],
                                             " directions; 1 to 4 are projected on");
    }
}

}  // namespace amnlm
