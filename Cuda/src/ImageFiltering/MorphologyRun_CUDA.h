#pragma once

#include <cstdint>

#include "NppArguments_CUDA.h"
#include "Runners/CudaRunners_CUDA.h"
#include "Runners/InstanceChoice_CUDA.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/Gpu_CUDA.h"

namespace zel::cuda {

/// What the functors of erosion, dilation, opening and closing hold.
template <typename T>
struct MorphologyFunctor {
    template <typename Algo>
    MorphologyFunctor(const Algo& algorithm, bool dilatesFirst, unsigned chains, NppStreamContext* streamContext)
        : radius(static_cast<std::int32_t>(algorithm.kernelRadius.get())),
          square(algorithm.neighborhood.get() == 1),
          dilateFirst(dilatesFirst),
          needsScratch(radius > 1 || chains > 1),
          context(streamContext) {}

    std::uint64_t scratchBytes(const Vector3<unsigned>& size) const {
        return needsScratch ? std::uint64_t{size.x} * size.y * sizeof(T) : 0;
    }

    std::int32_t radius;
    bool square;
    bool dilateFirst;   ///< where there is one operation only: whether it is dilation
    bool needsScratch;  ///< for what lies between two passes
    NppStreamContext* context;
    DeviceImage<T> scratch{0, 0, true};
};

/// Runs an algorithm of this family with the implementation of its voxel type, which is float for those without one.
///
/// @tparam Impl     Impl<Algo, T> is a tiled driver whose functor is Impl<Algo, T>::Functor.
/// @param chains    operations of the radius applied in turn: each needs a margin of its own.
template <template <typename, typename> typename Impl, typename Algo>
void runMorphology(Algo* algorithm, bool dilateFirst, unsigned chains, RunPlan* plan) {
    withInstance<float>(*algorithm, [&]<typename T>() {
        const auto context = makeNppStreamContext(algorithm->cudaContext);
        typename Impl<Algo, T>::Functor functor(*algorithm, dilateFirst, chains, context.get());
        const unsigned margin = chains * algorithm->kernelRadius.get();
        runOrPlan(Impl<Algo, T>(algorithm, Vector3<unsigned>{margin, margin, 0}, &functor, context->hStream), plan);
    });
}

}  // namespace zel::cuda
