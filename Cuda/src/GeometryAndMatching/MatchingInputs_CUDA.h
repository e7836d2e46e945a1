#pragma once

#include "ImageFiltering/RealFft.h"
#include "MatchingGeometry.h"
#include "Tiling/DeviceVolume.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/TemporaryImage.h"

namespace zel::cuda {

/// Threshold of the local variance, below which a score is 0: a hundredth of the variance of the whole image. One step
/// of the run.
double varianceThreshold(AbstractPrivateImplementation* run, const ImageModel& image);

/// A mask for every voxel of the template. One step of the run.
RefImpl<TemporaryImage> maskOfOnes(AbstractPrivateImplementation* run, const ImageModel& templateImage);

/// The half spectrum of a box, zero frequency in the corner, cut out of the middle of a filter that has it at its
/// centre. One step of the run.
/// @param filter  at least boxSize, and one more along x.
template <typename R>
DeviceImage<SpectrumOf<R>> uploadFilter(AbstractPrivateImplementation* run, const ImageModel& filter,
                                        const Size3& boxSize, cudaStream_t stream);

/// Puts an image, or a part of one, of voxel type T into a packed buffer of `size` at `at`, with 0 around it; queued on
/// the stream.
template <typename T, typename R>
void placeImage(const ImageModel& image, DeviceImage<R>& buffer, const Size3& size, const Size3& at,
                cudaStream_t stream);

}  // namespace zel::cuda
