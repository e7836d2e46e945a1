#include "Kernels/MultiplyByConjugate.h"
#include "Kernels/MultiplyComplex.h"
#include "Pixelwise.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

template <typename P>
using Part = decltype(P::x);

template <typename P>
using Pixel = P (*)(const P& a, const P& b);

template <typename P>
P product(const P& a, const P& b) {
    return {a.x * b.x - a.y * b.y, std::fma(a.y, b.x, a.x * b.y)};
}
template <typename P>
P swappedProduct(const P& a, const P& b) {
    return product(b, a);
}
template <typename P>
P conjugateProduct(const P& a, const P& b) {
    return {std::fma(a.x, b.x, a.y * b.y), a.y * b.x - a.x * b.y};
}

/// A launcher or a kernel of both modules' shape, with what it is to make of a pixel.
template <typename P, typename Launch>
PixelwiseOperation<P> operation(Pixel<P> pixel, Part<P> scale, const Launch& launch) {
    return {launch, [=](const std::vector<P>& in) {
                const P result = pixel(in[0], in[1]);
                return P{result.x * scale, result.y * scale};
            }};
}

/// The launch of a kernel that no launcher reaches, for each slice.
template <typename... Parameters>
auto bySlices(void (*kernel)(Parameters...)) {
    return [=](const auto& in, const auto& out, const VolumeSize& size) {
        const auto &a = in[0], &b = in[1];
        launchBySlices(size, [&](const cudaLaunchConfig_t& config, const auto& at) {
            if constexpr (sizeof...(Parameters) == 7)
                cudaLaunchKernelEx(&config, kernel, at(a), a.pitch, at(b), b.pitch, at(out), out.pitch, size[0]);
            else
                cudaLaunchKernelEx(&config, kernel, at(a), a.pitch, at(b), b.pitch, size[0]);
        });
    };
}

template <typename P>
class ComplexProductTest : public ::testing::Test {};
using ComplexTypes = ::testing::Types<float2, double2>;
TYPED_TEST_SUITE(ComplexProductTest, ComplexTypes);

}  // namespace

// In place of the second factor as well: of the conjugate product that is still a times conj(b).
TYPED_TEST(ComplexProductTest, ScalesWhereverTheResultGoes) {
    using P = TypeParam;
    using R = Part<P>;
    const R scale = R(0.3);
    const auto complex = launching<2>(multiplyComplexAndScale<R, P>, scale);
    const auto conjugate = launching<2>(multiplyByConjugateAndScale<R, P>, scale);
    expectPixelwise(operation<P>(product, scale, complex), {"abc", "aba", "aac", "aaa"});
    expectPixelwise(operation<P>(swappedProduct, scale, complex), {"abb"});
    expectPixelwise(operation<P>(conjugateProduct, scale, conjugate), {"abc", "aba", "abb", "aac", "aaa"});
}

TYPED_TEST(ComplexProductTest, KernelsWithoutAScaleGiveThePureProduct) {
    using P = TypeParam;
    const auto check = [](Pixel<P> pixel, auto kernel, const char* placement) {
        expectPixelwise(operation<P>(pixel, 1, bySlices(kernel)), {placement});
    };
    check(product<P>, multiplyComplexKernel<P>, "abc");
    check(product<P>, multiplyComplexInsituKernel<P>, "aba");
    check(conjugateProduct<P>, multiplyByConjugateKernel<P>, "abc");
    check(conjugateProduct<P>, multiplyByConjugateInsituKernel<P>, "aba");
    check(conjugateProduct<P>, multiplyByConjugateInsitu2Kernel<P>, "abb");
}
