#include "Convolution1dInstances.h"
#include "Convolution1dLaunch.h"
#include "Convolution1dTaps.h"
#include "CudaConvolution1d.h"
#include "MirrorIndex.h"
#include "ReadRow.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "lanes.h"

namespace zel::cuda {

template <typename TIn, typename TOut, typename TTap>
__global__ void dispatchConvolution1dOnRows(const TIn* src, unsigned long long srcPitch,
                                            unsigned long long srcSlicePitch, TOut* dst, unsigned long long dstPitch,
                                            unsigned long long dstSlicePitch, unsigned long long width,
                                            unsigned long long height, unsigned long long depth, TTap* taps,
                                            unsigned long long tapCount, int half, unsigned long long lineLength,
                                            LaneShared<TIn>* lines, LaneShared<unsigned long long>* offsets) {
    LaneShared<TIn>* const line = lines + blockIdx.x * lineLength;
    LaneShared<unsigned long long>* const table = offsets + blockIdx.x * lineLength;
    forEachPosition(lineLength, [=](std::uint64_t k) {
        table[k] = mirrorIndex(static_cast<int>(k) - half, static_cast<int>(width));
    });
    blockBarrier();
    forEachLine(depth, height, [=](std::uint64_t z, std::uint64_t y) {
        readRowMirrorParallel(src, srcPitch, srcSlicePitch, width, line, table, static_cast<int>(lineLength), y, z,
                              firstItem(), itemStride());
        blockBarrier();
        TOut* const dstRow = offsetBytes(dst, y * dstPitch + z * dstSlicePitch);
        forEachBundle(width, [=](const auto bundle) {
            convolve(
                bundle, taps, tapCount,
                [=](std::uint64_t k, unsigned int lane) { return line[bundle.first + lane + k]; },
                dstRow + bundle.first);
        });
        blockBarrier();
    });
}

template <typename TIn, typename TOut>
void convolution1dOnRows(const TIn* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, TOut* dst,
                         std::uint64_t dstPitch, std::uint64_t dstSlicePitch, std::uint64_t width, std::uint64_t height,
                         std::uint64_t depth, const float* taps, std::uint64_t tapCount, cudaStream_t stream,
                         unsigned int maxBlocks, unsigned int maxThreads) {
    launchConvolution1d<TIn>(dispatchConvolution1dOnRows<TIn, TOut, float>, height, width, taps, tapCount, stream,
                             maxBlocks, maxThreads, src, srcPitch, srcSlicePitch, dst, dstPitch, dstSlicePitch, width,
                             height, depth);
}

#define LAUNCHERS(NAME, CODE, T) ZEL_INSTANCES_WITH_FLOAT(convolution1dOnRows, T)
ZEL_FOR_EACH_INTEGER_KERNEL_TYPE(LAUNCHERS)
ZEL_INSTANCES_WITH_FLOAT(convolution1dOnRows, double)
ZEL_INSTANCE(convolution1dOnRows, float, float)
#undef LAUNCHERS

}  // namespace zel::cuda
