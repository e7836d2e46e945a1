#include "ImageFiltering/FftUtilities_CUDA.h"

#include "Messages.h"
#include "PaddedVolume.h"
#include "TestImages.h"

namespace zel::cuda {
namespace {

using test::PaddedVolume;
using test::toDevice;
using test::toHost;

TEST(FastFftSizeTest, IsTheNextOneOfTheTable) {
    constexpr std::pair<std::uint64_t, std::uint64_t> cases[] = {
        {0, 1},       {1, 1},       {6, 7},        {10, 16},       {129, 243},     {1025, 1168},  {2187, 2187},
        {2188, 2401}, {7501, 7502}, {8193, 15625}, {65537, 78125}, {78125, 78125}, {78126, 78126}};
    for (const auto& [wanted, size] : cases) EXPECT_EQ(nextFastFftSize(wanted), size);
    // All entries: a size is its own when it is one.
    std::uint64_t entries = 0, sum = 0;
    for (std::uint64_t size = 1; size <= 78125; ++size) {
        if (nextFastFftSize(size) != size) continue;
        ++entries;
        sum += size;
    }
    EXPECT_EQ(entries, 56u);
    EXPECT_EQ(sum, 411930u);
}

/// A region of a volume.
struct Region {
    std::array<std::size_t, 3> origin, size;

    bool contains(std::size_t x, std::size_t y, std::size_t z) const {
        const std::array at{x, y, z};
        for (std::size_t axis = 0; axis < 3; ++axis)
            if (at[axis] < origin[axis] || at[axis] >= origin[axis] + size[axis]) return false;
        return true;
    }
};

/// The volume with its voxels outside the region set.
template <typename R>
std::vector<R> filledOutside(PaddedVolume<R> volume, const Region& region, R value) {
    volume.forEachPosition([&](std::size_t x, std::size_t y, std::size_t z) {
        if (!region.contains(x, y, z)) volume.elements[volume.indexOf(x, y, z)] = value;
    });
    return volume.elements;
}

template <typename R>
class FftBufferTest : public ::testing::Test {};
TYPED_TEST_SUITE(FftBufferTest, decltype(test::testedTypes(TypeList<float, double>{})));

TYPED_TEST(FftBufferTest, FillsAllAroundARegion) {
    using R = TypeParam;
    const auto volume = PaddedVolume<R>::numbered({7, 5, 4}, 2);
    const R value = -1;
    const Region regions[] = {{{2, 1, 1}, {3, 2, 2}},
                              {{0, 0, 0}, {7, 5, 4}},
                              {{0, 0, 0}, {4, 5, 3}},
                              {{3, 2, 0}, {4, 3, 4}},
                              {{1, 0, 2}, {6, 5, 2}}};
    for (const Region& region : regions) {
        const auto& [x, y, z] = region.origin;
        const auto& [width, height, depth] = region.size;
        SCOPED_TRACE(testing::Message() << width << " x " << height << " x " << depth << " at " << x << ", " << y);
        const bool atOrigin = x + y + z == 0;
        const auto expectFilled = [&](const PaddedVolume<R>& image, const Region& kept, const auto& fill) {
            const auto device = toDevice(image.elements);
            fill(device.get());
            EXPECT_EQ(toHost(device, image.elements.size()), filledOutside(image, kept, value));
        };
        expectFilled(volume, region, [&](R* first) {
            fillOutsideRegion3d(first, volume.pitch(), volume.slicePitch(), x, y, z, width, height, depth, 7, 5, 4,
                                value, nullptr);
        });
        const auto slice = PaddedVolume<R>::numbered({7, 5, 1}, 2);
        const Region flat{{x, y, 0}, {width, height, 1}};
        expectFilled(slice, flat, [&](R* first) {
            if (atOrigin)
                fillOutsideRegion2d(first, slice.pitch(), width, height, 7, 5, value, nullptr);
            else
                fillOutsideRegion2d(first, slice.pitch(), x, y, width, height, 7, 5, value, nullptr);
        });
        if (atOrigin)
            expectFilled(volume, region, [&](R* first) {
                fillOutsideRegion3d(first, volume.pitch(), volume.slicePitch(), width, height, depth, 7, 5, 4, value,
                                    nullptr);
            });
    }
}

template <typename T>
class ConvertAndPadTest : public ::testing::Test {};
TYPED_TEST_SUITE(ConvertAndPadTest, decltype(test::testedTypes(KernelTypes{})));

TYPED_TEST(ConvertAndPadTest, PutsTheImageAtTheOrigin) {
    using T = TypeParam;
    using R = FftReal<T>;
    for (const std::size_t depth : {1u, 3u}) {
        auto source = PaddedVolume<T>::numbered({5, 4, depth}, 1);
        source.elements[0] = std::numeric_limits<T>::max();
        const auto target = PaddedVolume<R>({9, 6, depth + depth / 2}, 3, R(-5));
        PaddedVolume<R> expected = target;
        expected.forEachVoxel([](R& voxel) { voxel = 2; });
        source.forEachPosition([&](std::size_t x, std::size_t y, std::size_t z) {
            expected.elements[expected.indexOf(x, y, z)] = static_cast<R>(source.elements[source.indexOf(x, y, z)]);
        });

        const auto from = toDevice(source.elements);
        const auto to = toDevice(target.elements);
        if (depth == 1)
            convertAndPad2d(from.get(), source.pitch(), 5, 4, to.get(), target.pitch(), 9, 6, R(2), nullptr);
        else
            convertAndPad3d(from.get(), source.pitch(), source.slicePitch(), 5, 4, depth, to.get(), target.pitch(),
                            target.slicePitch(), 9, 6, target.size[2], R(2), nullptr);
        EXPECT_EQ(toHost(to, target.elements.size()), expected.elements);
    }
}

TEST(FftPlanMakerTest, PlansShareOneWorkAreaAndRefuseMore) {
    const std::array<std::uint64_t, 3> size{9, 6, 5};
    for (const std::uint64_t nz : {1u, 5u}) {
        FftWorkArea area;
        const auto make = [&](cufftType type) {
            return nz == 1 ? makeFftPlan2d(size[1], size[0], type, area, nullptr)
                           : makeFftPlan3d(nz, size[1], size[0], type, area, nullptr);
        };
        const cufftHandle forward = make(CUFFT_R2C);
        const auto held = area.data;
        const cufftHandle inverse = make(CUFFT_C2R);
        EXPECT_EQ(area.data, held);
        EXPECT_THAT(test::messageOf([&] { makeFftPlan2d(60, 60, CUFFT_R2C, area, nullptr); }),
                    testing::HasSubstr("Preallocated CUDA memory does not fit the necessary size."));
        EXPECT_THAT(test::messageOf([&] { makeFftPlan2d(std::uint64_t{1} << 32 | 4, 4, CUFFT_R2C, area, nullptr); }),
                    testing::HasSubstr("User specified an invalid transform size"));
        destroyFftPlan(forward);
        destroyFftPlan(inverse);
        EXPECT_THAT(test::messageOf([&] { destroyFftPlan(inverse); }),
                    testing::HasSubstr("cuFFT was passed an invalid plan handle"));
    }
    std::uint64_t workSize = 0;
    destroyFftPlan(makeFftPlan3dAutoWork(5, 6, 9, CUFFT_Z2D, workSize, nullptr));
}

}  // namespace
}  // namespace zel::cuda
