#include "MorphologyPasses_CUDA.h"

#include <nppi_morphological_operations.h>

#include <cstdint>
#include <memory>

#include "Kernels/FillKernel.h"
#include "NppArguments_CUDA.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::cuda {

namespace {

/// NPP's functions for a type: by the square of 3 by 3 pixels, and by a mask.
template <typename T>
struct NppMorphology;

#define FUNCTIONS(T, SUFFIX)                                                          \
    template <>                                                                       \
    struct NppMorphology<T> {                                                         \
        static constexpr auto erodeSquare = &nppiErode3x3Border_##SUFFIX##_C1R_Ctx;   \
        static constexpr auto dilateSquare = &nppiDilate3x3Border_##SUFFIX##_C1R_Ctx; \
        static constexpr auto erodeMask = &nppiErodeBorder_##SUFFIX##_C1R_Ctx;        \
        static constexpr auto dilateMask = &nppiDilateBorder_##SUFFIX##_C1R_Ctx;      \
    };
FUNCTIONS(std::uint8_t, 8u)
FUNCTIONS(std::uint16_t, 16u)
FUNCTIONS(float, 32f)
#undef FUNCTIONS

template <typename T>
struct Plane {
    T* data;
    std::size_t pitch;
};

/// A structuring element in device memory: bytes of 1 where it selects a pixel.
class DeviceMask {
public:
    DeviceMask(int radius, bool square, cudaStream_t stream)
        : size_{2 * radius + 1, 2 * radius + 1}, anchor_{radius, radius}, memory_(allocateDeviceMemory(bytes())) {
        if (square) {
            checkCudaStatus(cudaMemsetAsync(data(), 1, bytes(), stream));
        } else {
            // Passes by an unwritten mask would look like a result. The launch's own status: the pending error may be
            // an old one of the caller's.
            checkCudaStatus(fillKernelV4(data(), radius, stream));
        }
    }

    unsigned char* data() const { return static_cast<unsigned char*>(memory_.get()); }
    NppiSize size() const { return size_; }
    NppiPoint anchor() const { return anchor_; }

private:
    std::size_t bytes() const { return static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(size_.height); }

    NppiSize size_;
    NppiPoint anchor_;
    std::shared_ptr<void> memory_;
};

/// What all passes of a call have in common.
template <typename T>
struct Passes {
    NppiSize size;
    const NppStreamContext& context;
    bool dilate;

    void square(const Plane<const T>& from, const Plane<T>& to) const {
        const auto call = dilate ? NppMorphology<T>::dilateSquare : NppMorphology<T>::erodeSquare;
        checkNppStatus(call(from.data, nppStep(from.pitch), size, NppiPoint{0, 0}, to.data, nppStep(to.pitch), size,
                            NPP_BORDER_REPLICATE, context));
    }

    void masked(const Plane<const T>& from, const Plane<T>& to, const DeviceMask& mask) const {
        const auto call = dilate ? NppMorphology<T>::dilateMask : NppMorphology<T>::erodeMask;
        checkNppStatus(call(from.data, nppStep(from.pitch), size, NppiPoint{0, 0}, to.data, nppStep(to.pitch), size,
                            mask.data(), mask.size(), mask.anchor(), NPP_BORDER_REPLICATE, context));
    }
};

/// pass(from, to), `count` times: from src first, then in turns between tmp and dst so that the last one ends in dst.
/// The first `unsynchronised` passes are queued without waiting, each later one after the device is done with the last.
template <typename T, typename Pass>
void repeatPasses(const Plane<const T>& src, const Plane<T>& tmp, const Plane<T>& dst, int count, int unsynchronised,
                  const Pass& pass) {
    Plane<const T> from = src;
    for (int done = 0; done < count; ++done) {
        if (done >= unsynchronised) checkCudaStatus(cudaDeviceSynchronize());
        const Plane<T>& to = (count - done) % 2 == 1 ? dst : tmp;
        pass(from, to);
        from = {to.data, to.pitch};
    }
    checkCudaStatus(cudaDeviceSynchronize());
}

}  // namespace

template <typename T>
void morphologyPasses(const T* src, std::size_t srcPitch, T* tmp, std::size_t tmpPitch, T* dst, std::size_t dstPitch,
                      NppiSize size, int passes, bool square, const NppStreamContext& context, bool dilate) {
    const Plane<const T> from{src, srcPitch};
    const Plane<T> work{tmp, tmpPitch};
    const Plane<T> to{dst, dstPitch};
    const Passes<T> calls{size, context, dilate};
    // With an even number of passes the first one writes the work area while src is still being read.
    const bool workIsUsable = tmp != nullptr && (passes % 2 == 1 || tmp != src);

    if (square && (passes == 1 || workIsUsable)) {
        const int unsynchronised = passes % 2 == 0 ? 2 : 1;
        repeatPasses(from, work, to, passes, unsynchronised,
                     [&](const auto& source, const auto& target) { calls.square(source, target); });
    } else if (!square && workIsUsable) {
        const DeviceMask mask(1, square, context.hStream);
        repeatPasses(from, work, to, passes, 1,
                     [&](const auto& source, const auto& target) { calls.masked(source, target, mask); });
    } else {
        const DeviceMask mask(passes, square, context.hStream);
        calls.masked(from, to, mask);
        checkCudaStatus(cudaDeviceSynchronize());
    }
}

template void morphologyPasses(const std::uint8_t*, std::size_t, std::uint8_t*, std::size_t, std::uint8_t*, std::size_t,
                               NppiSize, int, bool, const NppStreamContext&, bool);
template void morphologyPasses(const std::uint16_t*, std::size_t, std::uint16_t*, std::size_t, std::uint16_t*,
                               std::size_t, NppiSize, int, bool, const NppStreamContext&, bool);
template void morphologyPasses(const float*, std::size_t, float*, std::size_t, float*, std::size_t, NppiSize, int, bool,
                               const NppStreamContext&, bool);

}  // namespace zel::cuda
