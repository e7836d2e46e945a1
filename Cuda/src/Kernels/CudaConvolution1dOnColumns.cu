#include "Convolution1dInstances.h"
#include "Convolution1dLaunch.h"
#include "Convolution1dTaps.h"
#include "CudaConvolution1d.h"
#include "ReadColumn.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "lanes.h"

namespace zel::cuda {

template <typename TIn, typename TOut, typename TTap>
__global__ void dispatchConvolution1dOnColumns(const TIn* src, unsigned long long srcPitch,
                                               unsigned long long srcSlicePitch, TOut* dst, unsigned long long dstPitch,
                                               unsigned long long dstSlicePitch, unsigned long long width,
                                               unsigned long long height, unsigned long long depth, TTap* taps,
                                               unsigned long long tapCount, int half, unsigned long long lineLength,
                                               LaneShared<TIn>* lines, LaneShared<unsigned long long>*) {
    forEachLineBundle(depth, width, [=](std::uint64_t z, const auto bundle) {
        const auto line = bundleLines(bundle, lines + blockIdx.x * lineLength, lineLength);
        readColumnMirrorParallel(src, srcPitch, srcSlicePitch, height, line, -half, static_cast<int>(lineLength),
                                 bundle.first, z, firstItem(), itemStride());
        blockBarrier();
        TOut* const dstColumns = offsetBytes(dst + bundle.first, z * dstSlicePitch);
        forEachPosition(height, [=](std::uint64_t y) {
            convolve(
                bundle, taps, tapCount, [=](std::uint64_t k, unsigned int lane) { return line(y + k, lane); },
                offsetBytes(dstColumns, y * dstPitch));
        });
        blockBarrier();
    });
}

template <typename TIn, typename TOut>
void convolution1dOnColumns(const TIn* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, TOut* dst,
                            std::uint64_t dstPitch, std::uint64_t dstSlicePitch, std::uint64_t width,
                            std::uint64_t height, std::uint64_t depth, const float* taps, std::uint64_t tapCount,
                            cudaStream_t stream, unsigned int maxBlocks, unsigned int maxThreads) {
    launchConvolution1d<TIn>(dispatchConvolution1dOnColumns<TIn, TOut, float>, width, height, taps, tapCount, stream,
                             maxBlocks, maxThreads, src, srcPitch, srcSlicePitch, dst, dstPitch, dstSlicePitch, width,
                             height, depth);
}

#define LAUNCHERS(NAME, CODE, T) ZEL_INSTANCES_WITH_FLOAT(convolution1dOnColumns, T)
ZEL_FOR_EACH_INTEGER_KERNEL_TYPE(LAUNCHERS)
ZEL_INSTANCES_WITH_FLOAT(convolution1dOnColumns, double)
ZEL_INSTANCE(convolution1dOnColumns, float, float)
#undef LAUNCHERS

}  // namespace zel::cuda
