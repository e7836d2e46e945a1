#pragma once

#include <cstdint>

#include "NppArguments_CUDA.h"
#include "Runners/InstanceChoice_CUDA.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/Gpu_CUDA.h"

namespace zel::cuda {

/// What the functors of erosion, dilation, opening and closing hold.
template <typename T>
struct MorphologyFunctor {
    template <typename Algo>
    MorphologyFunctor(const Algo& algorithm, bool dilatesFirst, NppStreamContext* streamContext)
        : radius(static_cast<std::int32_t>(algorithm.kernelRadius.get())),
          square(algorithm.neighborhood.get() == 1),
          dilateFirst(dilatesFirst),
          context(streamContext) {}

    std::int32_t radius;
    bool square;
    bool dilateFirst;  ///< where there is one operation only: whether it is dilation
    NppStreamContext* context;
    DeviceImage<T> scratch{0, 0, true};
};

/// Runs an algorithm of this family with the implementation of its voxel type, which is float for those without one.
///
/// @tparam Impl     Impl<Algo, T> is a tiled driver whose functor is Impl<Algo, T>::Functor.
/// @param chains    operations of the radius applied in turn: each needs a margin of its own.
template <template <typename, typename> typename Impl, typename Algo>
void runMorphology(Algo* algorithm, bool dilateFirst, unsigned chains) {
    withInstance<float>(*algorithm, [&]<typename T>() {
        const auto context = makeNppStreamContext(algorithm->cudaContext);
        typename Impl<Algo, T>::Functor functor(*algorithm, dilateFirst, context.get());
        const unsigned margin = chains * algorithm->kernelRadius.get();
        Impl<Algo, T>(algorithm, Vector3<unsigned>{margin, margin, 0}, &functor, context->hStream).run();
    });
}

}  // namespace zel::cuda
