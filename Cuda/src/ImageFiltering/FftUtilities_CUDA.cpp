#include "FftUtilities_CUDA.h"

#include <algorithm>
#include <array>
#include <limits>

#include "Helper/raise.h"
#include "Kernels/ConvertImage.h"
#include "Kernels/ResetImage.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "zel/VoxelTypes.h"

namespace zel::cuda {

namespace {

constexpr const char* thisFile = "Cuda/src/ImageFiltering/FftUtilities_CUDA";

/// A size too large for the library's int becomes one that it refuses.
int fftLength(std::uint64_t length) {
    return length <= std::numeric_limits<int>::max() ? static_cast<int>(length) : -1;
}

/// Destroys the plan if it cannot be completed.
class NewPlan {
public:
    explicit NewPlan(cudaStream_t stream) : NewPlan() { checkCufftStatus(cufftSetStream(handle_, stream)); }
    NewPlan(cudaStream_t stream, bool autoAllocation) : NewPlan() {
        checkCufftStatus(cufftSetAutoAllocation(handle_, autoAllocation ? 1 : 0));
        checkCufftStatus(cufftSetStream(handle_, stream));
    }
    ~NewPlan() {
        if (owned_) cufftDestroy(handle_);
    }
    NewPlan(const NewPlan&) = delete;
    NewPlan& operator=(const NewPlan&) = delete;

    cufftHandle handle() const { return handle_; }
    cufftHandle release() {
        owned_ = false;
        return handle_;
    }

private:
    NewPlan() {
        checkCufftStatus(cufftCreate(&handle_));
        owned_ = true;
    }

    cufftHandle handle_ = 0;
    bool owned_ = false;
};

/// The work area, or a new one where there is none yet, for a plan that needs so many bytes.
FftWorkArea fittingWorkArea(const FftWorkArea& workArea, std::uint64_t bytes) {
    if (workArea.data != nullptr) {
        if (bytes <= workArea.size) return workArea;
        raise<RuntimeError>(thisFile, __LINE__, "Preallocated CUDA memory does not fit the necessary size.");
    }
    const FftWorkArea made{bytes, allocateDeviceMemory(bytes)};
    if (made.data == nullptr)
        raise<RuntimeError>(thisFile, __LINE__, "Failed to allocate CUDA memory for the work area.");
    return made;
}

/// @param getSize, makePlan  the library's calls for a number of dimensions, called with the handle and its sizes.
template <typename GetSize, typename MakePlan>
cufftHandle makeFftPlan(FftWorkArea& workArea, cudaStream_t stream, const GetSize& getSize, const MakePlan& makePlan) {
    NewPlan plan(stream, false);
    std::size_t bytes = 0;
    checkCufftStatus(getSize(plan.handle(), &bytes));
    const FftWorkArea fitting = fittingWorkArea(workArea, bytes);
    checkCufftStatus(cufftSetWorkArea(plan.handle(), fitting.data.get()));
    checkCufftStatus(makePlan(plan.handle(), &bytes));
    workArea = fitting;
    return plan.release();
}

/// Sets a box of a volume; nothing where it is empty.
template <typename R>
struct BoxFill {
    R* dst;
    std::uint64_t pitch, slicePitch;
    R value;
    cudaStream_t stream;

    void operator()(std::uint64_t x, std::uint64_t y, std::uint64_t z, std::uint64_t width, std::uint64_t height,
                    std::uint64_t depth) const {
        if (width == 0 || height == 0 || depth == 0) return;
        resetImage(offsetBytes(dst, z * slicePitch + y * pitch + x * sizeof(R)), pitch, slicePitch, value, width,
                   height, depth, stream);
    }
};

}  // namespace

std::uint64_t nextFastFftSize(std::uint64_t size) {
    static constexpr std::array<std::uint64_t, 56> sizes = {
        1,    2,    3,    4,    5,    7,    8,     9,     16,    25,    27,    32,    49,    64,
        81,   125,  128,  243,  256,  343,  512,   625,   729,   1024,  1168,  1296,  1408,  1536,
        1664, 2048, 2187, 2401, 3125, 3200, 3456,  3584,  4096,  4608,  5120,  5760,  6144,  6560,
        6912, 7000, 7168, 7500, 7502, 8192, 15625, 16384, 16807, 19683, 32768, 59049, 65536, 78125};
    if (size > sizes.back()) return size;
    return *std::lower_bound(sizes.begin(), sizes.end(), size);
}

cufftHandle makeFftPlan2d(std::uint64_t ny, std::uint64_t nx, cufftType type, FftWorkArea& workArea,
                          cudaStream_t stream) {
    const int y = fftLength(ny), x = fftLength(nx);
    return makeFftPlan(
        workArea, stream, [&](cufftHandle plan, std::size_t* bytes) { return cufftGetSize2d(plan, y, x, type, bytes); },
        [&](cufftHandle plan, std::size_t* bytes) { return cufftMakePlan2d(plan, y, x, type, bytes); });
}

cufftHandle makeFftPlan3d(std::uint64_t nz, std::uint64_t ny, std::uint64_t nx, cufftType type, FftWorkArea& workArea,
                          cudaStream_t stream) {
    const int z = fftLength(nz), y = fftLength(ny), x = fftLength(nx);
    return makeFftPlan(
        workArea, stream,
        [&](cufftHandle plan, std::size_t* bytes) { return cufftGetSize3d(plan, z, y, x, type, bytes); },
        [&](cufftHandle plan, std::size_t* bytes) { return cufftMakePlan3d(plan, z, y, x, type, bytes); });
}

cufftHandle makeFftPlan3dAutoWork(std::uint64_t nz, std::uint64_t ny, std::uint64_t nx, cufftType type,
                                  std::uint64_t& workSize, cudaStream_t stream) {
    NewPlan plan(stream);
    std::size_t bytes = 0;
    checkCufftStatus(cufftMakePlan3d(plan.handle(), fftLength(nz), fftLength(ny), fftLength(nx), type, &bytes));
    workSize = bytes;
    return plan.release();
}

std::uint64_t fftWorkBytes(std::uint64_t nx, std::uint64_t ny, std::uint64_t nz, cufftType type) {
    const NewPlan plan(nullptr, false);
    const int x = fftLength(nx), y = fftLength(ny), z = fftLength(nz);
    std::size_t bytes = 0;
    checkCufftStatus(z == 1 ? cufftGetSize2d(plan.handle(), y, x, type, &bytes)
                            : cufftGetSize3d(plan.handle(), z, y, x, type, &bytes));
    return bytes;
}

void destroyFftPlan(cufftHandle plan) {
    checkCufftStatus(cufftDestroy(plan));
}

template <typename R>
void fillOutsideRegion2d(R* dst, std::uint64_t pitch, std::uint64_t x0, std::uint64_t y0, std::uint64_t width,
                         std::uint64_t height, std::uint64_t fullWidth, std::uint64_t fullHeight, R value,
                         cudaStream_t stream) {
    fillOutsideRegion3d(dst, pitch, 0, x0, y0, 0, width, height, 1, fullWidth, fullHeight, 1, value, stream);
}

template <typename R>
void fillOutsideRegion2d(R* dst, std::uint64_t pitch, std::uint64_t width, std::uint64_t height,
                         std::uint64_t fullWidth, std::uint64_t fullHeight, R value, cudaStream_t stream) {
    fillOutsideRegion2d(dst, pitch, 0, 0, width, height, fullWidth, fullHeight, value, stream);
}

template <typename R>
void fillOutsideRegion3d(R* dst, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t x0, std::uint64_t y0,
                         std::uint64_t z0, std::uint64_t width, std::uint64_t height, std::uint64_t depth,
                         std::uint64_t fullWidth, std::uint64_t fullHeight, std::uint64_t fullDepth, R value,
                         cudaStream_t stream) {
    const BoxFill<R> fill{dst, pitch, slicePitch, value, stream};
    const std::uint64_t right = x0 + width, below = y0 + height, behind = z0 + depth;
    fill(0, 0, 0, fullWidth, fullHeight, z0);
    fill(0, 0, z0, fullWidth, y0, depth);
    fill(0, y0, z0, x0, height, depth);
    fill(right, y0, z0, fullWidth - right, height, depth);
    fill(0, below, z0, fullWidth, fullHeight - below, depth);
    fill(0, 0, behind, fullWidth, fullHeight, fullDepth - behind);
}

template <typename R>
void fillOutsideRegion3d(R* dst, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t width,
                         std::uint64_t height, std::uint64_t depth, std::uint64_t fullWidth, std::uint64_t fullHeight,
                         std::uint64_t fullDepth, R value, cudaStream_t stream) {
    fillOutsideRegion3d(dst, pitch, slicePitch, 0, 0, 0, width, height, depth, fullWidth, fullHeight, fullDepth, value,
                        stream);
}

template <typename T>
void convertAndPad2d(const T* src, std::uint64_t srcPitch, std::uint64_t width, std::uint64_t height, FftReal<T>* dst,
                     std::uint64_t dstPitch, std::uint64_t fullWidth, std::uint64_t fullHeight, FftReal<T> value,
                     cudaStream_t stream) {
    convertAndPad3d(src, srcPitch, 0, width, height, 1, dst, dstPitch, 0, fullWidth, fullHeight, 1, value, stream);
}

template <typename T>
void convertAndPad3d(const T* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, std::uint64_t width,
                     std::uint64_t height, std::uint64_t depth, FftReal<T>* dst, std::uint64_t dstPitch,
                     std::uint64_t dstSlicePitch, std::uint64_t fullWidth, std::uint64_t fullHeight,
                     std::uint64_t fullDepth, FftReal<T> value, cudaStream_t stream) {
    // float and double to themselves are copies.
    convertImage(src, srcPitch, srcSlicePitch, dst, dstPitch, dstSlicePitch, width, height, depth, RoundMode::HalfUp,
                 stream);
    fillOutsideRegion3d(dst, dstPitch, dstSlicePitch, width, height, depth, fullWidth, fullHeight, fullDepth, value,
                        stream);
}

#define FILL(R)                                                                                                      \
    template void fillOutsideRegion2d(R*, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, \
                                      std::uint64_t, std::uint64_t, R, cudaStream_t);                                \
    template void fillOutsideRegion2d(R*, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, \
                                      R, cudaStream_t);                                                              \
    template void fillOutsideRegion3d(R*, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, \
                                      std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,     \
                                      std::uint64_t, R, cudaStream_t);                                               \
    template void fillOutsideRegion3d(R*, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, \
                                      std::uint64_t, std::uint64_t, std::uint64_t, R, cudaStream_t);
FILL(float)
FILL(double)
#undef FILL

#define CONVERT(NAME, CODE, T)                                                                                         \
    template void convertAndPad2d(const T*, std::uint64_t, std::uint64_t, std::uint64_t, FftReal<T>*, std::uint64_t,   \
                                  std::uint64_t, std::uint64_t, FftReal<T>, cudaStream_t);                             \
    template void convertAndPad3d(const T*, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, \
                                  FftReal<T>*, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,             \
                                  std::uint64_t, FftReal<T>, cudaStream_t);
ZEL_FOR_EACH_KERNEL_TYPE(CONVERT)
#undef CONVERT

}  // namespace zel::cuda
