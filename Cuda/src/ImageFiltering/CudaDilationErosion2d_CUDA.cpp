#include "MorphologyPasses_CUDA.h"
#include "MorphologyRun_CUDA.h"
#include "Tiling/TiledImageToImage.h"

namespace zel::cuda {

namespace {

template <typename T>
struct ErosionDilationTilingProcessingFunctor : MorphologyFunctor<T> {
    using MorphologyFunctor<T>::MorphologyFunctor;

    void prepare(const Vector3<unsigned>& size) {
        if (this->needsScratch) this->scratch.resize(size.x, size.y, false);
    }

    void process(const T* src, std::size_t srcPitch, T* dst, std::size_t dstPitch, const Vector3<unsigned>& size) {
        morphologyPasses(src, srcPitch, this->scratch.data(), this->scratch.pitch(), dst, dstPitch, nppSize(size),
                         this->radius, this->square, *this->context, this->dilateFirst);
    }
};

template <typename Algo, typename T>
using CudaDilationErosion2dImpl =
    BaseImplCudaAlgorithm2dImageToImage<Algo, T, T, ErosionDilationTilingProcessingFunctor<T>>;

}  // namespace

void runOnGpu(CudaErosion2d* algorithm, RunPlan* plan) {
    runMorphology<CudaDilationErosion2dImpl>(algorithm, false, 1, plan);
}

void runOnGpu(CudaDilation2d* algorithm, RunPlan* plan) {
    runMorphology<CudaDilationErosion2dImpl>(algorithm, true, 1, plan);
}

}  // namespace zel::cuda
