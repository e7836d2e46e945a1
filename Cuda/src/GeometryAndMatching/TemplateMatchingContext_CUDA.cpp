#include "TemplateMatchingContext_CUDA.h"

#include "Kernels/IntensityStatistics.h"
#include "Kernels/MultiplyByConjugate.h"
#include "Kernels/MultiplyComplex.h"
#include "Kernels/MultiplyImage.h"
#include "Kernels/NormalizeStandardization.h"
#include "Kernels/NormalizeWithStandardDeviation.h"
#include "Kernels/ResetImage.h"
#include "Kernels/SquareImage.h"
#include "Tiling/DeviceVolume.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "zel/ImageModelAdapter.h"

namespace zel::cuda {

namespace {

/// Below that a template is flat: it is centred, and not divided.
constexpr double flatDeviation = 0.000001;

template <typename R>
ImageModelAdapter inWorkingType(const ImageModel& image) {
    return {&image, voxelTypeOf<R>, DataConvertionTypes::cast};
}

template <typename T>
void upload(const ImageModel& image, DeviceImage<T>& buffer, cudaStream_t stream) {
    copyImageToDevice3d(image, buffer.data(), buffer.pitch(), buffer.slicePitch(), 0, 0, stream);
}

/// A packed buffer: memory that kept a larger pitch would not be.
template <typename T>
void makePacked(DeviceImage<T>& buffer, const Size3& size) {
    buffer.clear();
    buffer.resize(size[0], size[1], size[2], true);
}

}  // namespace

template <typename R>
TemplateMatchingContext<R>::TemplateMatchingContext(AbstractPrivateImplementation* run, cudaStream_t stream,
                                                    const ImageModel& templateImage, const ImageModel& mask,
                                                    const Size3& boxSize, bool maskFollowsTransformation,
                                                    PadTemplate padTemplate)
    : TemplateTransformation(run),
      stream_(stream),
      templateImage_(templateImage),
      maskImage_(mask),
      templateSize_(sizeOf(templateImage)),
      boxSize_(boxSize),
      padTemplate_(std::move(padTemplate)) {
    maskFollows = maskFollowsTransformation;
}

template <typename R>
void TemplateMatchingContext<R>::attach(DeviceImage<R>* paddedImage, const Size3& size, const Size3& offset,
                                        const Size3& imageSize, const Spacing3& spacing, double threshold) {
    paddedImage_ = paddedImage;
    imageOffset_ = offset;
    imageSize_ = imageSize;
    imageSpacing = spacing;
    varianceThreshold_ = threshold;
    spectrumReady_ = false;
    if (size == paddedSize) return;
    paddedSize = size;
    spectrumSize_ = {(size[0] >> 1) + 1, size[1], size[2]};
    makeBuffers();
}

template <typename R>
void TemplateMatchingContext<R>::makeBuffers() {
    const auto [width, height, depth] = paddedSize;
    forwardPlan_ = FftPlan(makeFftPlan3d(depth, height, width, RealFft<R>::forward, workArea_, stream_));
    inversePlan_ = FftPlan(makeFftPlan3d(depth, height, width, RealFft<R>::inverse, workArea_, stream_));
    makePacked(imageSpectrum_, spectrumSize_);
    if (resizedTemplate == nullptr) resizedTemplate = TemporaryImage::New(LocationMode::hostMemory);
    if (transformedTemplate_ == nullptr) transformedTemplate_ = TemporaryImage::New(LocationMode::hostMemory);
    makePacked(templateReal_, paddedSize);
    makePacked(templateSpectrum_, spectrumSize_);
    if (transformedMask_ == nullptr) transformedMask_ = TemporaryImage::New(LocationMode::hostMemory);
    makePacked(maskReal_, paddedSize);
    makePacked(maskSpectrum_, spectrumSize_);
    makePacked(productSpectrum_, spectrumSize_);
    makePacked(correlation_, paddedSize);
    // The statistics follow on first use.
    localMean_.clear();
    imageSquared_.clear();
    localMeanSquare_.clear();
    imageSquaredSpectrum_.clear();
}

template <typename R>
void TemplateMatchingContext<R>::setFilter(DeviceImage<Spectrum>* filter) {
    filterForwardPlan_ = FftPlan();
    filterInversePlan_ = FftPlan();
    filterReal_.reset();
    filterSpectrum_.reset();
    filter_ = filter;
}

template <typename R>
void TemplateMatchingContext<R>::endStep(std::uint64_t steps) {
    implementation->throwIfCancelled();
    implementation->incrementStep(steps);
}

template <typename R>
void TemplateMatchingContext<R>::synchronizeAndEndStep() {
    checkCudaStatus(cudaDeviceSynchronize());
    endStep();
}

template <typename R>
bool TemplateMatchingContext<R>::maskChanges() const {
    return (info.hasRotation && maskFollows) || info.hasScale;
}

template <typename R>
void TemplateMatchingContext<R>::correlate() {
    if (spacingOf(maskImage_) != imageSpacing) info.hasScale = true;
    if (!spectrumReady_) forwardFft(forwardPlan_.handle(), paddedImage_->data(), imageSpectrum_.data());
    prepareTemplate();
    updateLocalStatistics();
    spectrumReady_ = true;
    correlateSpectra();
    normalize();
    synchronizeAndEndStep();
}

template <typename R>
void TemplateMatchingContext<R>::prepareTemplate() {
    // A scale that changes no number of voxels is none.
    if (info.hasScale && scaledSize(templateSize_, info, spacingOf(maskImage_), imageSpacing) == templateSize_) {
        info.hasScale = false;
    }
    if (info.hasScale || spacingOf(templateImage_) != imageSpacing) {
        resizeAlgorithm = Resize3d::New(implementation);
        resizeAlgorithm->interpolation = 1;
    }
    if (info.hasRotation) resampleAlgorithm = ResampleAffine3d::New(implementation);
    currentTemplateSize = templateSize_;
    loadMask();
    loadTemplate();
    if (filter_ != nullptr) applyFilter();
    standardizeTemplate();
    endStep();
    forwardFft(forwardPlan_.handle(), templateReal_.data(), templateSpectrum_.data());
    synchronizeAndEndStep();
}

template <typename R>
void TemplateMatchingContext<R>::fillAround(DeviceImage<R>& buffer) {
    fillOutsideRegion3d(buffer.data(), buffer.pitch(), buffer.slicePitch(), currentTemplateSize[0],
                        currentTemplateSize[1], currentTemplateSize[2], paddedSize[0], paddedSize[1], paddedSize[2],
                        R{0}, stream_);
}

template <typename R>
void TemplateMatchingContext<R>::loadMask() {
    const ImageModelAdapter mask = inWorkingType<R>(maskImage_);
    if (maskChanges()) {
        ImageModel& transformed = *transformedMask_->getImageModel();
        transformTemplate(*this, mask, transformed);
        upload(transformed, maskReal_, stream_);
        endStep();
    } else {
        upload(mask, maskReal_, stream_);
        endStep(3);  // resizing, turning, upload
    }
    fillAround(maskReal_);
    checkCudaStatus(cudaDeviceSynchronize());
    forwardFft(forwardPlan_.handle(), maskReal_.data(), maskSpectrum_.data());
}

template <typename R>
void TemplateMatchingContext<R>::loadTemplate() {
    if (info.hasRotation || info.hasScale) {
        ImageModel& transformed = *transformedTemplate_->getImageModel();
        transformTemplate(*this, inWorkingType<R>(templateImage_), transformed);
        upload(transformed, templateReal_, stream_);
        fillAround(templateReal_);
        endStep();
    } else {
        padTemplate_(templateReal_, paddedSize);
        checkCudaStatus(cudaDeviceSynchronize());
        endStep(3);
    }
}

template <typename R>
void TemplateMatchingContext<R>::applyFilter() {
    const auto [width, height, depth] = boxSize_;
    if (filterReal_ == nullptr) filterReal_ = std::make_unique<DeviceImage<R>>(width, height, depth, false);
    DeviceImage<R>& box = *filterReal_;
    copyDeviceVolume<R>(templateReal_.data(), templateReal_.pitch(), templateReal_.slicePitch(), box.data(),
                        box.pitch(), box.slicePitch(), width, height, depth, stream_);
    const std::size_t halfWidth = (width >> 1) + 1;
    if (filterSpectrum_ == nullptr) {
        filterSpectrum_ = std::make_unique<DeviceImage<Spectrum>>(halfWidth, height, depth, false);
    }
    if (!filterForwardPlan_) {
        std::uint64_t workSize = 0;
        filterForwardPlan_ =
            FftPlan(makeFftPlan3dAutoWork(depth, height, width, RealFft<R>::forward, workSize, stream_));
        filterInversePlan_ =
            FftPlan(makeFftPlan3dAutoWork(depth, height, width, RealFft<R>::inverse, workSize, stream_));
    }
    DeviceImage<Spectrum>& spectrum = *filterSpectrum_;
    forwardFft(filterForwardPlan_.handle(), box.data(), spectrum.data());
    const auto scale =
        static_cast<R>(1.0 / (static_cast<double>(width) * static_cast<double>(height) * static_cast<double>(depth)));
    multiplyComplexAndScale<R, Spectrum>(spectrum.data(), spectrum.pitch(), spectrum.slicePitch(), filter_->data(),
                                         filter_->pitch(), filter_->slicePitch(), spectrum.data(), spectrum.pitch(),
                                         spectrum.slicePitch(), halfWidth, height, depth, scale, stream_);
    inverseFft(filterInversePlan_.handle(), spectrum.data(), box.data());
    copyDeviceVolume<R>(box.data(), box.pitch(), box.slicePitch(), templateReal_.data(), templateReal_.pitch(),
                        templateReal_.slicePitch(), width, height, depth, stream_);
}

template <typename R>
void TemplateMatchingContext<R>::standardizeTemplate() {
    const auto [width, height, depth] = currentTemplateSize;
    R* const voxels = templateReal_.data();
    const std::size_t pitch = templateReal_.pitch();
    const std::size_t slicePitch = templateReal_.slicePitch();
    IntensityStatisticsInfo statistics;
    cumulateIntensities<R>(voxels, pitch, slicePitch, maskReal_.data(), maskReal_.pitch(), maskReal_.slicePitch(),
                           width, height, depth, &statistics, stream_);
    maskCount_ = statistics.count;
    const double deviation = statistics.standardDeviation < flatDeviation ? 1 : statistics.standardDeviation;
    standardization<R>(voxels, pitch, slicePitch, voxels, pitch, slicePitch, width, height, depth,
                       static_cast<R>(statistics.mean), static_cast<R>(deviation), stream_);
    multiplyImage<R>(voxels, pitch, slicePitch, maskReal_.data(), maskReal_.pitch(), maskReal_.slicePitch(), voxels,
                     pitch, slicePitch, width, height, depth, stream_);
}

template <typename R>
void TemplateMatchingContext<R>::updateLocalStatistics() {
    const auto [width, height, depth] = paddedSize;
    // They belong to the mask that they were made with: a row whose mask is as given cannot take over those of a
    // transformed one.
    const bool ofOtherMask = maskChanges() || statisticsOfTransformedMask_;
    const bool first = localMean_.width() != width || !spectrumReady_;
    if (first) {
        localMean_.resize(width, height, depth, false);
        imageSquared_.resize(width, height, depth, false);
        squareImage<R>(paddedImage_->data(), paddedImage_->pitch(), paddedImage_->slicePitch(), imageSquared_.data(),
                       imageSquared_.pitch(), imageSquared_.slicePitch(), width, height, depth, stream_);
    }
    if (first || ofOtherMask) meanUnderMask(imageSpectrum_, localMean_);
    synchronizeAndEndStep();

    const bool firstSquare = localMeanSquare_.width() != width || !spectrumReady_;
    if (firstSquare) {
        localMeanSquare_.resize(width, height, depth, false);
        imageSquaredSpectrum_.resize(spectrumSize_[0], spectrumSize_[1], spectrumSize_[2], false);
        forwardFft(forwardPlan_.handle(), imageSquared_.data(), imageSquaredSpectrum_.data());
    }
    if (firstSquare || ofOtherMask) meanUnderMask(imageSquaredSpectrum_, localMeanSquare_);
    synchronizeAndEndStep();
    statisticsOfTransformedMask_ = maskChanges();
}

template <typename R>
void TemplateMatchingContext<R>::meanUnderMask(DeviceImage<Spectrum>& spectrum, DeviceImage<R>& mean) {
    const auto [width, height, depth] = paddedSize;
    if (maskCount_ == 0) {
        resetImage<R>(mean.data(), mean.pitch(), mean.slicePitch(), R{0}, width, height, depth, stream_);
        return;
    }
    const R scale =
        R{1} / (static_cast<R>(height) * static_cast<R>(width) * static_cast<R>(depth)) / static_cast<R>(maskCount_);
    multiplyComplexAndScale<R, Spectrum>(spectrum.data(), spectrum.pitch(), spectrum.slicePitch(), maskSpectrum_.data(),
                                         maskSpectrum_.pitch(), maskSpectrum_.slicePitch(), productSpectrum_.data(),
                                         productSpectrum_.pitch(), productSpectrum_.slicePitch(), spectrumSize_[0],
                                         spectrumSize_[1], spectrumSize_[2], scale, stream_);
    inverseFft(inversePlan_.handle(), productSpectrum_.data(), mean.data());
}

template <typename R>
void TemplateMatchingContext<R>::correlateSpectra() {
    const R scale = R{1} / (static_cast<R>(voxelsOf(paddedSize)) * static_cast<R>(maskCount_));
    multiplyByConjugateAndScale<R, Spectrum>(
        imageSpectrum_.data(), imageSpectrum_.pitch(), imageSpectrum_.slicePitch(), templateSpectrum_.data(),
        templateSpectrum_.pitch(), templateSpectrum_.slicePitch(), templateSpectrum_.data(), templateSpectrum_.pitch(),
        templateSpectrum_.slicePitch(), spectrumSize_[0], spectrumSize_[1], spectrumSize_[2], scale, stream_);
    synchronizeAndEndStep();
    inverseFft(inversePlan_.handle(), templateSpectrum_.data(), correlation_.data());
}

template <typename R>
void TemplateMatchingContext<R>::normalize() {
    Size3 statisticsOffset{};
    Size3 size = imageSize_;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::size_t half = (currentTemplateSize[axis] - 1) >> 1;
        statisticsOffset[axis] = (currentTemplateSize[axis] >> 1) + imageOffset_[axis];
        if (size[axis] + statisticsOffset[axis] > paddedSize[axis]) {
            size[axis] = paddedSize[axis] - statisticsOffset[axis];
        }
        resultOffset_[axis] = imageOffset_[axis] > half ? imageOffset_[axis] - half : 0;
    }
    const auto at = [](DeviceImage<R>& buffer, const Size3& voxel) {
        return volumeOf(buffer).from(
            {static_cast<unsigned>(voxel[0]), static_cast<unsigned>(voxel[1]), static_cast<unsigned>(voxel[2])});
    };
    const DeviceVolume<R> scores = at(correlation_, resultOffset_);
    const DeviceVolume<R> means = at(localMean_, statisticsOffset);
    const DeviceVolume<R> meanSquares = at(localMeanSquare_, statisticsOffset);
    normalizeWithStandardDeviation<R>(scores.data, scores.pitch, scores.slicePitch, means.data, means.pitch,
                                      means.slicePitch, meanSquares.data, meanSquares.pitch, meanSquares.slicePitch,
                                      static_cast<R>(varianceThreshold_), R{0}, R{-1}, R{1}, scores.data, scores.pitch,
                                      scores.slicePitch, size[0], size[1], size[2], stream_);
}

template <typename R>
std::uint64_t TemplateMatchingContext<R>::deviceBytes(const Size3& paddedSize) {
    const FftBytes<R> bytes(paddedSize[0], paddedSize[1], paddedSize[2]);
    return 6 * bytes.real + 5 * bytes.spectrum + bytes.forwardWork;
}

template <typename R>
std::uint64_t TemplateMatchingContext<R>::filterBytes(const Size3& boxSize) {
    const FftBytes<R> bytes(boxSize[0], boxSize[1], boxSize[2]);
    return bytes.real + bytes.spectrum + bytes.forwardWork + bytes.inverseWork;
}

template class TemplateMatchingContext<float>;
template class TemplateMatchingContext<double>;

}  // namespace zel::cuda
