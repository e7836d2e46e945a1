#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include <cstdint>
#include <memory>
#include <type_traits>

namespace zel::cuda {

/// Device memory that FFT plans work in. Plans that share one must run one after the other. The caller owns it, and
/// keeps it as long as the plans.
struct FftWorkArea {
    std::uint64_t size = 0;      ///< bytes
    std::shared_ptr<void> data;  ///< empty until the first plan is made
};

/// The smallest size of a table of well-chosen ones that is no less than this one; beyond the table the size itself.
std::uint64_t nextFastFftSize(std::uint64_t size);

// Plans of real transforms: real data of nx by ny (by nz) elements, packed, and their half spectrum of nx / 2 + 1 by ny
// (by nz), packed too. Transforms are unnormalised, and never in place. A plan belongs to its maker, who gives it back
// by destroyFftPlan().

/// A plan that works in `workArea`, which the first plan made with it allocates and later ones must not need more of.
/// @throws RuntimeError "Preallocated CUDA memory does not fit the necessary size.", or the
///                      library's own message; the work area is as before.
cufftHandle makeFftPlan2d(std::uint64_t ny, std::uint64_t nx, cufftType type, FftWorkArea& workArea,
                          cudaStream_t stream);
cufftHandle makeFftPlan3d(std::uint64_t nz, std::uint64_t ny, std::uint64_t nx, cufftType type, FftWorkArea& workArea,
                          cudaStream_t stream);
/// A plan with a work area of its own. @param workSize  gets the bytes of it.
cufftHandle makeFftPlan3dAutoWork(std::uint64_t nz, std::uint64_t ny, std::uint64_t nx, cufftType type,
                                  std::uint64_t& workSize, cudaStream_t stream);
void destroyFftPlan(cufftHandle plan);

/// Bytes of the work area of such a plan, of two dimensions where nz is 1; makes none.
std::uint64_t fftWorkBytes(std::uint64_t nx, std::uint64_t ny, std::uint64_t nz, cufftType type);

// The fills queue on `stream` and return without waiting. Sizes are in elements, pitches in bytes; R is float or
// double.

/// Fills what lies around the region of width by height at (x0, y0) of a buffer of fullWidth by fullHeight.
template <typename R>
void fillOutsideRegion2d(R* dst, std::uint64_t pitch, std::uint64_t x0, std::uint64_t y0, std::uint64_t width,
                         std::uint64_t height, std::uint64_t fullWidth, std::uint64_t fullHeight, R value,
                         cudaStream_t stream);
/// The region is at the origin.
template <typename R>
void fillOutsideRegion2d(R* dst, std::uint64_t pitch, std::uint64_t width, std::uint64_t height,
                         std::uint64_t fullWidth, std::uint64_t fullHeight, R value, cudaStream_t stream);
template <typename R>
void fillOutsideRegion3d(R* dst, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t x0, std::uint64_t y0,
                         std::uint64_t z0, std::uint64_t width, std::uint64_t height, std::uint64_t depth,
                         std::uint64_t fullWidth, std::uint64_t fullHeight, std::uint64_t fullDepth, R value,
                         cudaStream_t stream);
template <typename R>
void fillOutsideRegion3d(R* dst, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t width,
                         std::uint64_t height, std::uint64_t depth, std::uint64_t fullWidth, std::uint64_t fullHeight,
                         std::uint64_t fullDepth, R value, cudaStream_t stream);

/// The type that a voxel type is transformed in: double for 32-bit integers and double, else float.
template <typename T>
using FftReal = std::conditional_t<sizeof(T) < 4 || std::is_same_v<T, float>, float, double>;

/// Puts an image of any voxel type at the origin of a larger buffer, and fills the rest with `value`.
template <typename T>
void convertAndPad2d(const T* src, std::uint64_t srcPitch, std::uint64_t width, std::uint64_t height, FftReal<T>* dst,
                     std::uint64_t dstPitch, std::uint64_t fullWidth, std::uint64_t fullHeight, FftReal<T> value,
                     cudaStream_t stream);
template <typename T>
void convertAndPad3d(const T* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, std::uint64_t width,
                     std::uint64_t height, std::uint64_t depth, FftReal<T>* dst, std::uint64_t dstPitch,
                     std::uint64_t dstSlicePitch, std::uint64_t fullWidth, std::uint64_t fullHeight,
                     std::uint64_t fullDepth, FftReal<T> value, cudaStream_t stream);

}  // namespace zel::cuda
