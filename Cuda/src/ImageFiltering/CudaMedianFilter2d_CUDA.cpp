#include <nppi_filtering_functions.h>

#include <memory>

#include "NppArguments_CUDA.h"
#include "Runners/CudaRunners_CUDA.h"
#include "Runners/InstanceChoice_CUDA.h"
#include "Tiling/TiledImageToImage.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::cuda {

namespace {

/// NPP's functions for a type: the filter, and the size of the work buffer that it needs.
template <typename T>
struct NppMedian;

template <>
struct NppMedian<Npp8u> {
    static constexpr auto filter = &nppiFilterMedianBorder_8u_C1R_Ctx;
    static constexpr auto bufferSize = &nppiFilterMedianBorderGetBufferSize_8u_C1R_Ctx;
};

template <>
struct NppMedian<Npp16u> {
    static constexpr auto filter = &nppiFilterMedianBorder_16u_C1R_Ctx;
    static constexpr auto bufferSize = &nppiFilterMedianBorderGetBufferSize_16u_C1R_Ctx;
};

template <>
struct NppMedian<Npp16s> {
    static constexpr auto filter = &nppiFilterMedianBorder_16s_C1R_Ctx;
    static constexpr auto bufferSize = &nppiFilterMedianBorderGetBufferSize_16s_C1R_Ctx;
};

template <>
struct NppMedian<Npp32f> {
    static constexpr auto filter = &nppiFilterMedianBorder_32f_C1R_Ctx;
    static constexpr auto bufferSize = &nppiFilterMedianBorderGetBufferSize_32f_C1R_Ctx;
};

template <typename T>
struct MedianFilterTilingProcessingFunctor {
    MedianFilterTilingProcessingFunctor(unsigned kernelRadius, NppStreamContext* streamContext)
        : radius(kernelRadius),
          context(streamContext),
          maskSize{static_cast<int>(2 * radius + 1), static_cast<int>(2 * radius + 1)},
          anchor{static_cast<int>(radius), static_cast<int>(radius)} {}

    /// What NPP asks for as its work buffer.
    Npp32u scratchBytes(const Vector3<unsigned>& size) const {
        Npp32u count = 0;
        checkNppStatus(NppMedian<T>::bufferSize(nppSize(size), maskSize, &count, NPP_BORDER_MIRROR, *context));
        return count;
    }

    /// Makes the buffer large enough for a tile of this size. It never shrinks: later tiles that need less keep it.
    void prepare(const Vector3<unsigned>& size) {
        const Npp32u count = scratchBytes(size);
        checkCudaStatus(cudaDeviceSynchronize());
        if (count > bufferSize) {
            buffer.reset();
            buffer = allocateDeviceMemory(count);
            bufferSize = count;
        }
    }

    /// The border is that of the tile. Between tiles the margins hide it; at the image's edge it is the filter's own.
    void process(const T* src, std::size_t srcPitch, T* dst, std::size_t dstPitch,
                 const Vector3<unsigned>& size) const {
        checkNppStatus(NppMedian<T>::filter(src, nppStep(srcPitch), nppSize(size), NppiPoint{0, 0}, dst,
                                            nppStep(dstPitch), nppSize(size), maskSize, anchor,
                                            static_cast<Npp8u*>(buffer.get()), NPP_BORDER_MIRROR, *context));
    }

    unsigned radius;
    NppStreamContext* context;
    NppiSize maskSize;
    NppiPoint anchor;
    unsigned bufferSize = 0;       ///< bytes held in `buffer`
    std::shared_ptr<void> buffer;  ///< device memory; none while no tile needed any
};

template <typename T>
using CudaMedianFilter2dImpl =
    BaseImplCudaAlgorithm2dImageToImage<CudaMedianFilter2d, T, T, MedianFilterTilingProcessingFunctor<T>>;

}  // namespace

void runOnGpu(CudaMedianFilter2d* algorithm, RunPlan* plan) {
    withInstance<float>(*algorithm, [&]<typename T>() {
        const auto context = makeNppStreamContext(algorithm->cudaContext);
        MedianFilterTilingProcessingFunctor<T> functor(algorithm->kernelRadius, context.get());
        const Vector3<unsigned> overlap{functor.radius, functor.radius, 0};
        runOrPlan(CudaMedianFilter2dImpl<T>(algorithm, overlap, &functor, context->hStream), plan);
    });
}

}  // namespace zel::cuda
