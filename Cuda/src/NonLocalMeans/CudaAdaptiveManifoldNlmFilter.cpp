#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

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
    std::uint64_t voxels = 1;
    for (const std::int32_t extent : run.image) voxels *= static_cast<std::uint64_t>(extent);
    const std::int64_t samples =
        computeSampleSize(voxels, samplingConfidence, patchSampleMargin, patchSampleProportion);
    RkCUDAAMNLMData patches(run.patchSide(), run.patchSide(), run.patchSide(), static_cast<std::int32_t>(samples));
    sampleRandomPatches(patches, run.input, run.minimum, run.maximum, run.mean, run.patchRadius, samples);
    if (!computePcaEigenvectors(eigenvectors, patches, patchChannels, iterationLimit))
        raise<UnexpectedError>("Cuda/src/NonLocalMeans/CudaAdaptiveManifoldNlmFilter", __LINE__,
                               "Eigenvectors could not be computed. Try changing the number of PCA dimensions or "
                               "increasing the iterations limit.");
}

void CudaNonLocalMeansImpl::filterBlock(const Parameters& run, RkCUDAAMNLMData& eigenvectors, const Region& core) {
    const auto& [width, height, depth] = run.image;
    const Region extended = extendedRegion(core, run.haloRadius, Region({0, 0, 0}, {width - 1, height - 1, depth - 1}));
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

    const Extents3 block = findBlockExtents(parameters.image, budget, parameters.patchVoxels(), parameters.rangeSigma,
                                            parameters.spatialSigma);
    const std::int32_t overlap = 2 * parameters.haloRadius + 1;
    BlockIterator blocks(parameters.image, coreSteps(block, parameters.image, overlap));
    setNumberOfSteps(countBlocks(blocks));
    while (blocks.next()) {
        filterBlock(parameters, eigenvectors, blocks.core());
        nextStep();
    }
}

}  // namespace

void runOnGpu(CudaAdaptiveManifoldNlmFilter* algorithm) {
    CudaNonLocalMeansImpl(algorithm).run();
}

}  // namespace zel::cuda
