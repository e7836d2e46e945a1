#include "CudaDilationErosion2d_CUDA.h"

#include "Helper/safe_cast.h"
#include "MorphologyPasses_CUDA.h"
#include "MorphologyRun_CUDA.h"
#include "Tiling/BaseImplCudaAlgorithm2dImageToImage.h"
#include "zel/algorithms/Morphology2d.h"

namespace zel::cuda {

namespace {

template <typename T>
struct ErosionDilationTilingProcessingFunctor : MorphologyFunctor<T> {
    using MorphologyFunctor<T>::MorphologyFunctor;

    void prepare(const Vector3<unsigned>& size) {
        if (this->radius > 1) this->scratch.resize(size.x, size.y, false);
    }

    void process(const T* src, std::size_t srcPitch, T* dst, std::size_t dstPitch, const Vector3<unsigned>& size) {
        morphologyPasses(src, srcPitch, this->scratch.data(), this->scratch.pitch(), dst, dstPitch, nppSize(size),
                         this->radius, this->square, *this->context, this->dilateFirst);
    }
};

template <typename Algo, typename T>
class CudaDilationErosion2dImpl final
    : public BaseImplCudaAlgorithm2dImageToImage<Algo, T, T, ErosionDilationTilingProcessingFunctor<T>> {
public:
    using Functor = ErosionDilationTilingProcessingFunctor<T>;
    using BaseImplCudaAlgorithm2dImageToImage<Algo, T, T, Functor>::BaseImplCudaAlgorithm2dImageToImage;
};

}  // namespace

void CudaErosion2dRunner::run(BaseAlgorithm* algorithm) {
    runMorphology<CudaDilationErosion2dImpl>(safe_cast<CudaErosion2d*>(algorithm), false, 1);
}

void CudaDilation2dRunner::run(BaseAlgorithm* algorithm) {
    runMorphology<CudaDilationErosion2dImpl>(safe_cast<CudaDilation2d*>(algorithm), true, 1);
}

}  // namespace zel::cuda
