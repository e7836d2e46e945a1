#include <nppi_filtering_functions.h>

#include "NppArguments_CUDA.h"
#include "Runners/CudaRunners_CUDA.h"
#include "Runners/InstanceChoice_CUDA.h"
#include "Tiling/TiledImageToImage.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::cuda {

namespace {

template <typename T>
constexpr auto filterBoxBorder = nullptr;
template <>
constexpr auto filterBoxBorder<Npp8u> = &nppiFilterBoxBorder_8u_C1R_Ctx;
template <>
constexpr auto filterBoxBorder<Npp16u> = &nppiFilterBoxBorder_16u_C1R_Ctx;
template <>
constexpr auto filterBoxBorder<Npp16s> = &nppiFilterBoxBorder_16s_C1R_Ctx;
template <>
constexpr auto filterBoxBorder<Npp32f> = &nppiFilterBoxBorder_32f_C1R_Ctx;

template <typename T>
struct BoxFilterTilingProcessingFunctor {
    BoxFilterTilingProcessingFunctor(unsigned kernelSizeX, unsigned kernelSizeY, NppStreamContext* streamContext)
        : sizeX(kernelSizeX),
          sizeY(kernelSizeY),
          context(streamContext),
          maskSize{static_cast<int>(sizeX), static_cast<int>(sizeY)},
          anchor{static_cast<int>(sizeX / 2), static_cast<int>(sizeY / 2)} {}

    /// The border is that of the tile. Between tiles the margins hide it; at the image's edge it is the filter's own.
    void process(const T* src, std::size_t srcPitch, T* dst, std::size_t dstPitch,
                 const Vector3<unsigned>& size) const {
        checkNppStatus(filterBoxBorder<T>(src, nppStep(srcPitch), nppSize(size), NppiPoint{0, 0}, dst,
                                          nppStep(dstPitch), nppSize(size), maskSize, anchor, NPP_BORDER_REPLICATE,
                                          *context));
    }

    unsigned sizeX;
    unsigned sizeY;
    NppStreamContext* context;
    NppiSize maskSize;
    NppiPoint anchor;
};

template <typename T>
using CudaBoxFilter2dImpl =
    BaseImplCudaAlgorithm2dImageToImage<CudaBoxFilter2d, T, T, BoxFilterTilingProcessingFunctor<T>>;

}  // namespace

void runOnGpu(CudaBoxFilter2d* algorithm, RunPlan* plan) {
    withInstance<float>(*algorithm, [&]<typename T>() {
        const auto context = makeNppStreamContext(algorithm->cudaContext);
        BoxFilterTilingProcessingFunctor<T> functor(algorithm->kernelSizeX, algorithm->kernelSizeY, context.get());
        const Vector3<unsigned> overlap{functor.sizeX / 2, functor.sizeY / 2, 0};
        runOrPlan(CudaBoxFilter2dImpl<T>(algorithm, overlap, &functor, context->hStream), plan);
    });
}

}  // namespace zel::cuda
