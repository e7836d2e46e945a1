#include "MorphologyPasses_CUDA.h"
#include "MorphologyRun_CUDA.h"
#include "Tiling/TiledImageToImage.h"

namespace zel::cuda {

namespace {

template <typename T>
struct ClosingOpeningTilingProcessingFunctor : MorphologyFunctor<T> {
    using MorphologyFunctor<T>::MorphologyFunctor;

    void prepare(const Vector3<unsigned>& size) { this->scratch.resize(size.x, size.y, false); }

    /// The last call works in place of its own source, for which it needs an odd number of passes: so one scratch image
    /// is enough beside the tile's output.
    void process(const T* src, std::size_t srcPitch, T* dst, std::size_t dstPitch, const Vector3<unsigned>& size) {
        T* const between = this->scratch.data();
        const std::size_t pitch = this->scratch.pitch();
        const int r = this->radius;
        const bool first = this->dilateFirst;
        const auto passes = [&](const T* from, std::size_t fromPitch, T* work, std::size_t workPitch, T* to,
                                std::size_t toPitch, int count, bool dilate) {
            morphologyPasses(from, fromPitch, work, workPitch, to, toPitch, nppSize(size), count, this->square,
                             *this->context, dilate);
        };
        if (r % 2 == 1) {
            passes(src, srcPitch, dst, dstPitch, between, pitch, r, first);
            passes(between, pitch, between, pitch, dst, dstPitch, r, !first);
        } else {
            passes(src, srcPitch, between, pitch, dst, dstPitch, r, first);
            passes(dst, dstPitch, nullptr, 0, between, pitch, 1, !first);
            passes(between, pitch, between, pitch, dst, dstPitch, r - 1, !first);
        }
    }
};

template <typename Algo, typename T>
using CudaClosingOpening2dImpl =
    BaseImplCudaAlgorithm2dImageToImage<Algo, T, T, ClosingOpeningTilingProcessingFunctor<T>>;

}  // namespace

void runOnGpu(CudaOpening2d* algorithm, RunPlan* plan) {
    runMorphology<CudaClosingOpening2dImpl>(algorithm, false, 2, plan);
}

void runOnGpu(CudaClosing2d* algorithm, RunPlan* plan) {
    runMorphology<CudaClosingOpening2dImpl>(algorithm, true, 2, plan);
}

}  // namespace zel::cuda
