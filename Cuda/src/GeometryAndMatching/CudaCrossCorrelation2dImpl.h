#pragma once

#include <cuda_runtime.h>

#include <memory>
#include <type_traits>

#include "ImageFiltering/FftUtilities_CUDA.h"
#include "ImageFiltering/RealFft.h"
#include "Kernels/SubtractImage.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/BlockCutterManager.h"
#include "zel/algorithms/CudaCrossCorrelation2d.h"

namespace zel::cuda {

/// One run of the cross-correlation: C = inverse FFT of FFT(P) conj(FFT(Q)), P being the image in a larger buffer of
/// zeros, moved by the template's anchor, and Q the template at the origin of another one.
/// @tparam T     voxel type of image and template.
/// @tparam wide  1 to work in double, 0 in float.
template <typename T, int wide>
class CudaCrossCorrelation2dImpl final : public AbstractPrivateImplementation {
public:
    explicit CudaCrossCorrelation2dImpl(CudaCrossCorrelation2d* algorithm);
    void run() override;
    /// What run() is going to do.
    RunPlan plan();

private:
    using R = std::conditional_t<wide == 1, double, float>;
    using Spectrum = SpectrumOf<R>;
    static_assert(std::is_same_v<R, FftReal<T>>);

    /// The image in one piece.
    void runWhole(const ImageModel& image, const ImageModel& templateImage, int mode, ImageModel& output,
                  cudaStream_t stream);
    /// Device memory that it holds at the most.
    std::uint64_t wholeBytes() const;
    /// Tile by tile, as `cutter` says.
    void runTiled(const ImageModel& image, const ImageModel& templateImage, int mode, ImageModel& output,
                  cudaStream_t stream);
    std::uint64_t tiledBytes() const;

    /// @return how many tiles there are; the cutter is for more than one.
    std::uint64_t cut();
    std::uint64_t stepCount(std::uint64_t tiles) const;

    void endStep() {
        throwIfCancelled();
        nextStep();
    }
    /// Ends a step whose work is queued.
    void finishStep() {
        checkCudaStatus(cudaDeviceSynchronize());
        endStep();
    }

    CudaCrossCorrelation2d* algorithm_;
    Vector3<unsigned> centreOffset_;    ///< of the template's anchor from its first pixel
    Vector3<unsigned> trailingOffset_;  ///< of its last pixel from the anchor
    Vector3<unsigned> previousOverlap_;
    Vector3<unsigned> nextOverlap_;
    std::unique_ptr<BlockCutterManager> cutter_;
};

}  // namespace zel::cuda
