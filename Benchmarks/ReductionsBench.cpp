#include "CaseSizes.h"
#include "Comparison.h"
#include "Kernels/FindPositionMaxiamalIntensity.h"
#include "Kernels/IntensityStatistics.h"
#include "Kernels/MeanIntensity.h"
#include "Kernels/MultiplyByConjugate.h"
#include "Kernels/NormalizeStandardization.h"
#include "Kernels/NormalizeWithStandardDeviation.h"
#include "MemoryCopy.h"
#include "TestImages.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::bench {

namespace {

constexpr ImageSize size{4096, 4096};

template <typename T>
using Device = std::shared_ptr<cuda::DeviceImage<T>>;

Device<float> randomDeviceImage(unsigned seed) {
    const auto image = std::make_shared<cuda::DeviceImage<float>>(size.x, size.y, 1, true);
    cuda::copyImageToDevice2d(test::randomImage<float>(size, seed), image->data(), image->pitch(), 0, 0, nullptr);
    return image;
}

/// Each image is read once.
Comparison reductions() {
    const auto image = randomDeviceImage(1), weights = randomDeviceImage(2);
    const double bytes = voxelCount(size) * sizeof(float);
    const auto statistics = [=](const float* weightsData) {
        cuda::IntensityStatisticsInfo info;
        cuda::cumulateIntensities<float>(image->data(), image->pitch(), image->slicePitch(), weightsData,
                                         weights->pitch(), weights->slicePitch(), size.x, size.y, 1, &info, nullptr);
    };
    const auto mean = [=] {
        double value = 0;
        cuda::meanIntensity<float>(image->data(), image->pitch(), size.x, size.y, &value, nullptr);
    };
    const auto position = [=] {
        cuda::PositionMaximalIntensityInfo info;
        cuda::findPositionMaximalIntensity<float>(image->data(), image->pitch(), size.x, size.y, &info, nullptr);
    };
    return {{memoryReadPeer(bytes)},
            bytes,
            {{"mean", mean}, {"position", position}, {"statistics", [=] { statistics(nullptr); }}}};
}

Comparison weightedStatistics() {
    const auto image = randomDeviceImage(1), weights = randomDeviceImage(2);
    const double bytes = 2 * voxelCount(size) * sizeof(float);
    const auto statistics = [=] {
        cuda::IntensityStatisticsInfo info;
        cuda::cumulateIntensities<float>(image->data(), image->pitch(), image->slicePitch(), weights->data(),
                                         weights->pitch(), weights->slicePitch(), size.x, size.y, 1, &info, nullptr);
    };
    return {{memoryReadPeer(bytes)}, bytes, {{"weighted statistics", statistics}}};
}

/// @param images  that are read; one is written.
Comparison rowKernel(std::string name, int images, const std::function<void()>& launch) {
    const double bytes = (images + 1) * voxelCount(size) * sizeof(float);
    const auto run = [=] {
        launch();
        cuda::checkCudaStatus(cudaDeviceSynchronize());
    };
    return {{memoryCopyPeer(bytes)}, bytes, {{std::move(name), run}}};
}

/// The images as spectra of half their width.
Comparison conjugateProduct() {
    const auto a = randomDeviceImage(1), b = randomDeviceImage(2), out = randomDeviceImage(3);
    return rowKernel("multiplyByConjugateAndScale", 2, [=] {
        const auto spectrum = [](const Device<float>& image) { return reinterpret_cast<float2*>(image->data()); };
        cuda::multiplyByConjugateAndScale<float, float2>(spectrum(a), a->pitch(), a->slicePitch(), spectrum(b),
                                                         b->pitch(), b->slicePitch(), spectrum(out), out->pitch(),
                                                         out->slicePitch(), size.x / 2, size.y, 1, 1.0F, nullptr);
    });
}

/// In place, as the next one: the pixels tend to a constant.
Comparison standardization() {
    const auto image = randomDeviceImage(1);
    return rowKernel("standardization", 1, [=] {
        cuda::standardization<float>(image->data(), image->pitch(), image->slicePitch(), image->data(), image->pitch(),
                                     image->slicePitch(), size.x, size.y, 1, 0.5, 1.25, nullptr);
    });
}

Comparison localNormalization() {
    const auto image = randomDeviceImage(1), means = randomDeviceImage(2), squares = randomDeviceImage(3);
    return rowKernel("normalizeWithStandardDeviation", 3, [=] {
        cuda::normalizeWithStandardDeviation<float>(
            image->data(), image->pitch(), image->slicePitch(), means->data(), means->pitch(), means->slicePitch(),
            squares->data(), squares->pitch(), squares->slicePitch(), 1e-6F, 0, -1, 1, image->data(), image->pitch(),
            image->slicePitch(), size.x, size.y, 1, nullptr);
    });
}

}  // namespace

void addReductionCases(Comparisons& comparisons) {
    comparisons.add("reduce float " + sizeText(size), reductions);
    comparisons.add("reduce float weighted " + sizeText(size), weightedStatistics);
    comparisons.add("row kernel product " + sizeText(size), conjugateProduct);
    comparisons.add("row kernel standardize " + sizeText(size), standardization);
    comparisons.add("row kernel local normalize " + sizeText(size), localNormalization);
}

}  // namespace zel::bench
