#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

#include <algorithm>
#include <optional>

#include "BlockSearch_CUDA.h"
#include "CudaAmnlmBlocks.h"
#include "CudaAmnlmFilter.h"
#include "CudaAmnlmPCA.h"
#include "CudaAmnlmRPatches.h"
#include "CudaAmnlmStats_CUDA.h"
#include "Helper/raise.h"
#include "Runners/CudaRunners_CUDA.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/children/IntensityExtrema.h"

namespace zel::cuda {

namespace {

using namespace amnlm;

constexpr std::int32_t iterationLimit = 100;
constexpr std::int32_t manifoldIterations = 1;
constexpr float samplingConfidence = 95;
constexpr float patchSampleMargin = 5;
constexpr float patchSampleProportion = 50;

class CudaNonLocalMeansImpl final : public AbstractPrivateImplementation {
public:
    explicit CudaNonLocalMeansImpl(CudaAdaptiveManifoldNlmFilter* filter)
        : AbstractPrivateImplementation(filter), filter_(filter) {}

    void run() override;
    /// What run() is going to do with the device memory that is free now.
    RunPlan plan() const;

private:
    /// What a run reads from the properties and measures on the image.
    struct Parameters {
        const ImageModel* input;
        ImageModel* output;
        unsigned patchRadius;
        Extents3 image;
        float spatialSigma;
        float rangeSigma;
        std::int32_t haloRadius;
        float minimum;
        float maximum;
        float mean;

        std::int32_t patchSide() const { return 2 * static_cast<std::int32_t>(patchRadius) + 1; }
        std::int32_t patchVoxels() const { return patchSide() * patchSide() * patchSide(); }
        std::int64_t sampleSize() const {
            std::uint64_t voxels = 1;
            for (const std::int32_t extent : image) voxels *= static_cast<std::uint64_t>(extent);
            return computeSampleSize(voxels, samplingConfidence, patchSampleMargin, patchSampleProportion);
        }
        Region imageRegion() const { return Region({0, 0, 0}, {image[0] - 1, image[1] - 1, image[2] - 1}); }
        BlockIterator blocks(std::uint64_t budget) const {
            const Extents3 block = findBlockExtents(image, budget, patchVoxels(), rangeSigma, spatialSigma);
            return BlockIterator(image, coreSteps(block, image, 2 * haloRadius + 1));
        }
    };

    Parameters readProperties() const;
    void measureIntensities(Parameters& run);
    static void findPrincipalDirections(const Parameters& run, RkCUDAAMNLMData& eigenvectors);
    static void filterBlock(const Parameters& run, RkCUDAAMNLMData& eigenvectors, const Region& core);

    CudaAdaptiveManifoldNlmFilter* const filter_;
};

CudaNonLocalMeansImpl::Parameters CudaNonLocalMeansImpl::readProperties() const {
    Parameters run{};
    run.input = filter_->inputImage;
    run.output = filter_->outputImage;
    run.patchRadius = filter_->patchRadius;
    for (const int axis : {2, 1, 0})
        run.image[static_cast<std::size_t>(axis)] = static_cast<std::int32_t>(run.input->getDimension(axis));
    run.spatialSigma = static_cast<float>(filter_->spatialSigma.get());
    run.rangeSigma = static_cast<float>(filter_->rangeSigma.get());
    run.haloRadius = static_cast<std::int32_t>(filter_->haloRadius.get());
    return run;
}

void CudaNonLocalMeansImpl::measureIntensities(Parameters& run) {
    const auto extrema = IntensityExtrema::New(this);
    const auto measurement = IntensityExtremaMsr::New();
    extrema->inputImage = run.input;
    extrema->outputMeasurement = measurement.get();
    extrema->BaseAlgorithm::run(nullptr);
    const brontal_object_model::TupleX first(3);
    run.minimum = static_cast<float>(measurement->minimum_tag.at(first));
    run.maximum = static_cast<float>(measurement->maximum_tag.at(first));
    run.mean = estimateMeanIntensity(run.input, samplingConfidence);
}

void CudaNonLocalMeansImpl::findPrincipalDirections(const Parameters& run, RkCUDAAMNLMData& eigenvectors) {
    const std::int64_t samples = run.sampleSize();
    RkCUDAAMNLMData patches(run.patchSide(), run.patchSide(), run.patchSide(), static_cast<std::int32_t>(samples));
    sampleRandomPatches(patches, run.input, run.minimum, run.maximum, run.mean, run.patchRadius, samples);
    if (!computePcaEigenvectors(eigenvectors, patches, patchChannels, iterationLimit))
        raise<UnexpectedError>("Cuda/src/NonLocalMeans/CudaAdaptiveManifoldNlmFilter", __LINE__,
                               "Eigenvectors could not be computed. Try changing the number of PCA dimensions or "
                               "increasing the iterations limit.");
}

void CudaNonLocalMeansImpl::filterBlock(const Parameters& run, RkCUDAAMNLMData& eigenvectors, const Region& core) {
    const Region extended = extendedRegion(core, run.haloRadius, run.imageRegion());
    const std::int32_t nx = extended.extentX(), ny = extended.extentY(), nz = extended.extentZ();
    RkCUDAAMNLMData block(nz, ny, nx, 1);
    readBlock(run.input, run.minimum, run.maximum, extended, block);
    RkCUDAAMNLMData patchImage(nz, ny, nx, patchChannels);
    projectPatches(block, eigenvectors, run.minimum, run.maximum, run.mean, run.patchRadius, patchImage);
    RkCUDAAMNLMData result(nz, ny, nx, 1);
    adaptiveManifoldFilter(result, block, patchImage, run.rangeSigma, run.spatialSigma, manifoldIterations);
    writeBlock(run.output, run.minimum, run.maximum, result, extended, core);
}

void CudaNonLocalMeansImpl::run() {
    Parameters parameters = readProperties();
    const std::uint64_t budget = memoryBudget(filter_->cudaContext);
    measureIntensities(parameters);
    RkCUDAAMNLMData eigenvectors(1, patchChannels, parameters.patchVoxels(), 1);
    findPrincipalDirections(parameters, eigenvectors);

    BlockIterator blocks = parameters.blocks(budget);
    setNumberOfSteps(countBlocks(blocks));
    while (blocks.next()) {
        filterBlock(parameters, eigenvectors, blocks.core());
        nextStep();
    }
}

RunPlan CudaNonLocalMeansImpl::plan() const {
    const Parameters parameters = readProperties();
    BlockIterator blocks = parameters.blocks(memoryBudget(filter_->cudaContext));
    RunPlan plan{.steps = countBlocks(blocks)};
    const auto tilesAlong = [&](std::size_t axis) {
        return static_cast<unsigned>((blocks.size[axis] - 1) / blocks.step[axis] + 1);
    };
    plan.tiles = {tilesAlong(0), tilesAlong(1), tilesAlong(2)};
    Extents3 largest{};
    while (blocks.next()) {
        const Region block = extendedRegion(blocks.core(), parameters.haloRadius, parameters.imageRegion());
        largest = {std::max(largest[0], block.extentX()), std::max(largest[1], block.extentY()),
                   std::max(largest[2], block.extentZ())};
    }
    plan.tileSize = {static_cast<unsigned>(largest[0]), static_cast<unsigned>(largest[1]),
                     static_cast<unsigned>(largest[2])};
    const std::uint64_t patchBytes = sizeof(float) * static_cast<std::uint64_t>(parameters.patchVoxels());
    const std::uint64_t sampling =
        static_cast<std::uint64_t>(parameters.sampleSize()) * patchBytes + pcaBytes(parameters.patchVoxels());
    const std::uint64_t filtering = estimatePeakDeviceMemory(largest, parameters.rangeSigma, parameters.spatialSigma);
    plan.peakBytes = patchChannels * patchBytes + std::max(sampling, filtering);
    return plan;
}

}  // namespace

void runOnGpu(CudaAdaptiveManifoldNlmFilter* algorithm, RunPlan* plan) {
    runOrPlan(CudaNonLocalMeansImpl(algorithm), plan);
}

}  // namespace zel::cuda
