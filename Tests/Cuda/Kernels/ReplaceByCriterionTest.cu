#include "Kernels/ReplaceByCriterion.h"

#include <functional>
#include <limits>

#include "Pixelwise.h"
#include "zel/VoxelTypes.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

/// Two rows of pixels below, at and above the value, of the type's extremes, and of NaN where there is one.
template <typename Op, typename Plain, typename T>
void expectReplacement(T value) {
    using Limits = std::numeric_limits<T>;
    const T pixels[]{T(value - 1), value, T(value + 1), Limits::lowest(), Limits::max(), Limits::quiet_NaN()};
    const T replacement = 42;
    PaddedVolume<T> image({67, 2, 1}, 5, value);
    std::vector<T> voxels, expected;
    for (std::size_t i = 0; i < 2 * 67; ++i) {
        voxels.push_back(pixels[i % (Limits::has_quiet_NaN ? 6 : 5)]);
        expected.push_back(Plain{}(voxels.back(), value) ? replacement : voxels.back());
    }
    const auto device = toDevice(image.with(voxels));
    launchRowsPerSlice(2, 1, nullptr, [&](const cudaLaunchConfig_t& config, std::uint64_t) {
        cudaLaunchKernelEx(&config, replaceByCriterion2dKernel<Op, T>, device.get(), image.pitch(), value, replacement,
                           67);
    });
    EXPECT_TRUE(sameBits(toHost(device, image.elements.size()), image.with(expected)));
}

template <typename T>
void expectReplacements(T value) {
    SCOPED_TRACE(zel::voxelTypeName(zel::voxelTypeOf<T>));
    expectReplacement<ComparisonCriterionOperator_Equal_to<T>, std::equal_to<>>(value);
    expectReplacement<ComparisonCriterionOperator_Not_equal_to<T>, std::not_equal_to<>>(value);
    expectReplacement<ComparisonCriterionOperator_Less_than<T>, std::less<>>(value);
    expectReplacement<ComparisonCriterionOperator_Less_than_or_equal_to<T>, std::less_equal<>>(value);
    expectReplacement<ComparisonCriterionOperator_Greater_than<T>, std::greater<>>(value);
    expectReplacement<ComparisonCriterionOperator_Greater_than_or_equal_to<T>, std::greater_equal<>>(value);
}

}  // namespace

TEST(ReplaceByCriterionTest, ReplacesWhatComparesSo) {
    [&]<typename... T>(zel::TypeList<T...>) { (expectReplacements<T>(T(100)), ...); }(zel::KernelTypes{});
}
