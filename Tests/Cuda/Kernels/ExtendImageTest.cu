#include "Kernels/ExtendImage.h"

#include "Pixelwise.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

/// Where an image lies in an extended one.
struct Extension {
    std::size_t width, height, originX, originY, extendedWidth, extendedHeight;
};

template <typename T>
class ExtendImageTest : public ::testing::Test {};
TYPED_TEST_SUITE(ExtendImageTest, FloatTypes);

}  // namespace

// No border, one on each side alone, all around, and some wider than the image.
TYPED_TEST(ExtendImageTest, MirrorsTheImageInItsBorder) {
    using T = TypeParam;
    constexpr Extension extensions[] = {{4, 3, 0, 0, 4, 3},      {4, 3, 0, 0, 4, 5},      {4, 3, 0, 0, 6, 3},
                                        {4, 3, 2, 0, 6, 3},      {4, 3, 0, 1, 4, 4},      {3, 2, 7, 5, 15, 9},
                                        {70, 5, 30, 3, 200, 12}, {200, 1, 66, 4, 300, 9}, {1, 1, 2, 2, 70, 5}};
    for (const auto& [width, height, originX, originY, extendedWidth, extendedHeight] : extensions) {
        SCOPED_TRACE(testing::Message() << width << " x " << height << " at " << originX << ", " << originY << " of "
                                        << extendedWidth << " x " << extendedHeight);
        const RandomVolume<T> image({width, height, 1}, 3, 1, 5), extended({extendedWidth, extendedHeight, 1}, 5, 1, 6);
        std::vector<T> expected;
        for (std::size_t y = 0; y < extendedHeight; ++y)
            for (std::size_t x = 0; x < extendedWidth; ++x) {
                const auto sourceX = mirrored(static_cast<long>(x - originX), static_cast<long>(width));
                const auto sourceY = mirrored(static_cast<long>(y - originY), static_cast<long>(height));
                expected.push_back(image.plain.elements[image.plain.indexOf(sourceX, sourceY, 0)]);
            }
        extendImageWithMirror<T>(image.device.get(), image.plain.pitch(), width, height, extended.device.get(),
                                 extended.plain.pitch(), originX, originY, extendedWidth, extendedHeight, nullptr);
        extended.expect(extended.plain.with(expected));
    }
}

TYPED_TEST(ExtendImageTest, MirrorsVolumesAlongAllAxes) {
    using T = TypeParam;
    const RandomVolume<T> source({3, 2, 2}, 1, 1, 5), target({70, 5, 7}, 2, 2, 6);
    const int offsets[]{-5, -2, 1};
    const auto& [size, from] = std::tie(target.plain.size, source.plain);
    std::vector<T> expected;
    for (std::size_t i = 0; i < size[0] * size[1] * size[2]; ++i) {
        const std::size_t position[]{i % size[0], i / size[0] % size[1], i / size[0] / size[1]};
        std::size_t at[3];
        for (int axis = 0; axis < 3; ++axis)
            at[axis] = mirrored(static_cast<long>(position[axis]) + offsets[axis], static_cast<long>(from.size[axis]));
        expected.push_back(from.elements[from.indexOf(at[0], at[1], at[2])]);
    }
    cudaLaunchConfig_t config{};
    config.gridDim = dim3(5, 7);
    config.blockDim = dim3(rowBlockSize);
    const auto in = source.argument(), out = target.argument();
    cudaLaunchKernelEx(&config, fillExtendedPartOfImage3dWithMirrorKernel<T>, in.first, in.pitch, in.slicePitch, 3, 2,
                       2, out.first, out.pitch, out.slicePitch, 70, offsets[0], offsets[1], offsets[2]);
    target.expect(target.plain.with(expected));
}
