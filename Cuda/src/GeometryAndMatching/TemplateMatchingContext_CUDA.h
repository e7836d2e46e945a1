#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <functional>
#include <memory>

#include "ImageFiltering/FftUtilities_CUDA.h"
#include "ImageFiltering/RealFft.h"
#include "TransformTemplate_CUDA.h"
#include "Utilities_CUDA/DeviceImage.h"

namespace zel::cuda {

/// The masked normalised cross-correlation of one padded image, a whole one or a tile, with the template under one row
/// after the other. What does not depend on the row is worked out once for a padded image and kept.
///
/// With the image I (0 around it), the mask M and the template t under the row, the score at a position s is
/// clamp(C / sqrt(var), -1, 1), or 0 where var is below a threshold:
/// - C = 1/n sum over x of I(s + x) t'(x), with t' = M (t - mu) / sigma; n is the number of voxels with M > 0, mu and
///   sigma are mean and standard deviation of M t over them;
/// - var = max(0, B) - A^2, with the local mean A = 1/n sum over x of I(q - x) M(x), and B the same of I^2.
/// C is a correlation, A and B are convolutions: for a mask that is not symmetric they see it mirrored.
///
/// Every buffer is packed, for the transforms. A run has one object; R is its working type, float or double.
template <typename R>
class TemplateMatchingContext : public TemplateTransformation {
public:
    using Spectrum = SpectrumOf<R>;
    /// Puts the template as it is at the origin of a packed buffer of that size, 0 around it; queued on the stream.
    using PadTemplate = std::function<void(DeviceImage<R>& buffer, const Size3& size)>;

    /// @param boxSize  what every transformed template is expected to fit in.
    TemplateMatchingContext(AbstractPrivateImplementation* run, cudaStream_t stream, const ImageModel& templateImage,
                            const ImageModel& mask, const Size3& boxSize, bool maskFollowsTransformation,
                            PadTemplate padTemplate);

    /// Takes another padded image. Buffers and plans are made anew when it has another size.
    /// @param offset     where the voxels of interest begin in it.
    /// @param imageSize  how many there are along each axis.
    /// @param threshold  local variances below it make a score of 0.
    void attach(DeviceImage<R>* paddedImage, const Size3& paddedSize, const Size3& offset, const Size3& imageSize,
                const Spacing3& spacing, double threshold);
    /// A half spectrum of the box that each template is multiplied by, zero frequency in the corner; null for none.
    void setFilter(DeviceImage<Spectrum>* filter);

    /// Works out the row that `info` tells; twelve steps. The scores are in `correlation()` from `resultOffset()` on.
    /// @throws RuntimeError         a template that does not fit, a failed device.
    /// @throws ExceptionCancelation at one of its polls.
    void correlate();

    /// Device memory that an object for such an image holds, and with a filter what that adds, without the image and
    /// the filter themselves.
    static std::uint64_t deviceBytes(const Size3& paddedSize);
    static std::uint64_t filterBytes(const Size3& boxSize);

    const DeviceImage<R>& correlation() const { return correlation_; }
    const Size3& resultOffset() const { return resultOffset_; }

private:
    void makeBuffers();
    void prepareTemplate();
    void loadMask();
    void loadTemplate();
    void applyFilter();
    void standardizeTemplate();
    void updateLocalStatistics();
    void meanUnderMask(DeviceImage<Spectrum>& spectrum, DeviceImage<R>& mean);
    void correlateSpectra();
    void normalize();
    void endStep(std::uint64_t steps = 1);
    void synchronizeAndEndStep();
    bool maskChanges() const;
    void fillAround(DeviceImage<R>& buffer);
    std::size_t voxelsOf(const Size3& size) const { return size[0] * size[1] * size[2]; }

    cudaStream_t stream_;
    const ImageModel& templateImage_;
    const ImageModel& maskImage_;
    Size3 templateSize_;
    Size3 boxSize_;
    PadTemplate padTemplate_;

    DeviceImage<R>* paddedImage_ = nullptr;
    Size3 imageOffset_{};
    Size3 imageSize_{};
    double varianceThreshold_ = 0;
    Size3 spectrumSize_{};
    FftWorkArea workArea_;
    FftPlan forwardPlan_;
    FftPlan inversePlan_;

    // Of the padded image; ready when the first row is done.
    bool spectrumReady_ = false;
    DeviceImage<Spectrum> imageSpectrum_{0, 0, 0, false};
    DeviceImage<R> imageSquared_{0, 0, 0, false};
    DeviceImage<Spectrum> imageSquaredSpectrum_{0, 0, 0, false};

    // Of the padded image and the mask.
    DeviceImage<R> localMean_{0, 0, 0, false};
    DeviceImage<R> localMeanSquare_{0, 0, 0, false};
    bool statisticsOfTransformedMask_ = false;

    // Of the row.
    RefImpl<TemporaryImage> transformedTemplate_;
    RefImpl<TemporaryImage> transformedMask_;
    DeviceImage<R> templateReal_{0, 0, 0, false};  ///< t, then t'
    DeviceImage<R> maskReal_{0, 0, 0, false};
    DeviceImage<Spectrum> templateSpectrum_{0, 0, 0, false};  ///< of t', then the product
    DeviceImage<Spectrum> maskSpectrum_{0, 0, 0, false};
    DeviceImage<Spectrum> productSpectrum_{0, 0, 0, false};
    std::uint64_t maskCount_ = 0;
    DeviceImage<R> correlation_{0, 0, 0, false};  ///< then the scores
    Size3 resultOffset_{};

    // The frequency filter, of the box's size.
    DeviceImage<Spectrum>* filter_ = nullptr;
    std::unique_ptr<DeviceImage<R>> filterReal_;
    std::unique_ptr<DeviceImage<Spectrum>> filterSpectrum_;
    FftPlan filterForwardPlan_;
    FftPlan filterInversePlan_;
};

}  // namespace zel::cuda
