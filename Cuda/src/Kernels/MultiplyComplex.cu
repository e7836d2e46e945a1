#include "MultiplyComplex.h"

#include "BlockRow.h"
#include "ComplexRows.h"
#include "RowLaunch.h"

namespace zel::cuda {

template <typename P>
__global__ void multiplyComplexKernel(const P* a, unsigned long long aPitch, const P* b, unsigned long long bPitch,
                                      P* out, unsigned long long outPitch, unsigned long long width) {
    multiplyRows<Product>(blockRow(a, aPitch), blockRow(b, bPitch), blockRow(out, outPitch), width);
}

template <typename P>
__global__ void multiplyComplexInsituKernel(P* a, unsigned long long aPitch, const P* b, unsigned long long bPitch,
                                            unsigned long long width) {
    P* const aRow = blockRow(a, aPitch);
    multiplyRowsInsitu<Product>(aRow, blockRow(b, bPitch), aRow, width);
}

template <typename R, typename P>
__global__ void multiplyComplexAndScaleKernel(const P* a, unsigned long long aPitch, const P* b,
                                              unsigned long long bPitch, P* out, unsigned long long outPitch,
                                              unsigned long long width, R scale) {
    multiplyRows<Product>(blockRow(a, aPitch), blockRow(b, bPitch), blockRow(out, outPitch), width, scale);
}

template <typename R, typename P>
__global__ void multiplyComplexAndScaleInsituKernel(P* a, unsigned long long aPitch, const P* b,
                                                    unsigned long long bPitch, unsigned long long width, R scale) {
    P* const aRow = blockRow(a, aPitch);
    multiplyRowsInsitu<Product>(aRow, blockRow(b, bPitch), aRow, width, scale);
}

template <typename R, typename P>
void multiplyComplexAndScale(const P* a, std::uint64_t aPitch, std::uint64_t aSlicePitch, const P* b,
                             std::uint64_t bPitch, std::uint64_t bSlicePitch, P* out, std::uint64_t outPitch,
                             std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height,
                             std::uint64_t depth, R scale, cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        const P* const aSlice = offsetBytes(a, z * aSlicePitch);
        const P* const bSlice = offsetBytes(b, z * bSlicePitch);
        P* const outSlice = offsetBytes(out, z * outSlicePitch);
        const auto insituKernel = multiplyComplexAndScaleInsituKernel<R, P>;
        if (outSlice == aSlice)
            cudaLaunchKernelEx(&config, insituKernel, outSlice, aPitch, bSlice, bPitch, width, scale);
        else if (outSlice == bSlice)  // the product commutes
            cudaLaunchKernelEx(&config, insituKernel, outSlice, bPitch, aSlice, aPitch, width, scale);
        else
            cudaLaunchKernelEx(&config, multiplyComplexAndScaleKernel<R, P>, aSlice, aPitch, bSlice, bPitch, outSlice,
                               outPitch, width, scale);
    });
}

#define INSTANCES(R, P)                                                                                            \
    template void multiplyComplexAndScale(const P*, std::uint64_t, std::uint64_t, const P*, std::uint64_t,         \
                                          std::uint64_t, P*, std::uint64_t, std::uint64_t, std::uint64_t,          \
                                          std::uint64_t, std::uint64_t, R, cudaStream_t);                          \
    template __global__ void multiplyComplexKernel(const P*, unsigned long long, const P*, unsigned long long, P*, \
                                                   unsigned long long, unsigned long long);                        \
    template __global__ void multiplyComplexInsituKernel(P*, unsigned long long, const P*, unsigned long long,     \
                                                         unsigned long long);
INSTANCES(float, float2)
INSTANCES(double, double2)
#undef INSTANCES

}  // namespace zel::cuda
