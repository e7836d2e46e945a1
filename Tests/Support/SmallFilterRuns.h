#pragma once

#include "BoxFilterRun.h"
#include "CrossCorrelationRun.h"
#include "GaussianFilterRun.h"
#include "MatchingRun.h"
#include "MedianFilterRun.h"
#include "MorphologyRun.h"
#include "RunChecks.h"

namespace zel::test {

// Small runs that take each of their filters' ways. `blocks` is how many the image is cut into with the margins that
// the filter needs, counted by hand; `work` is a call that does the filtering.

template <typename Algo, typename T, unsigned radius, bool square, std::uint64_t blockCount>
struct Morphology : MorphologyRun<Algo> {
    using Pixel = T;
    static constexpr ImageSize size{60, 50};
    static constexpr Vector2<unsigned> tile{34, 30};
    static constexpr std::uint64_t blocks = blockCount, passes = 1;

    Morphology(HostImage& image, const Placement& placement) : MorphologyRun<Algo>(image, radius, square, placement) {}
};

struct SquareErosion : Morphology<cuda::CudaErosion2d, std::uint8_t, 2, true, 2 * 2> {
    static constexpr auto work = "nppiErode3x3Border_8u_C1R_Ctx";

    using Morphology::Morphology;
};

struct DiamondOpening : Morphology<cuda::CudaOpening2d, std::uint16_t, 2, false, 2 * 2> {
    static constexpr auto work = "nppiErodeBorder_16u_C1R_Ctx";

    using Morphology::Morphology;
};

struct DiamondClosing : Morphology<cuda::CudaClosing2d, float, 3, false, 3 * 3> {
    static constexpr auto work = "nppiDilateBorder_32f_C1R_Ctx";

    using Morphology::Morphology;
};

struct Gaussian : GaussianFilterRun {
    using Pixel = std::int16_t;
    static constexpr ImageSize size{20, 11, 7};
    static constexpr Vector3<unsigned> tile{12, 7, 5};
    static constexpr std::uint64_t blocks = 2 * 2 * 2, passes = 3;
    static constexpr auto work = "cudaLaunchKernelEx";

    Gaussian(HostImage& image, const Placement3d& placement)
        : GaussianFilterRun(image, image.getDataType(), {{1, 0.5, 0.7}, 2}, placement) {}
};

struct FlatGaussian : Gaussian {
    static constexpr ImageSize size{20, 11, 1};
    static constexpr Vector3<unsigned> tile{8, 11, 1};
    static constexpr std::uint64_t blocks = 4;

    using Gaussian::Gaussian;
};

struct SmallCrossCorrelation : CrossCorrelationRun {
    using Pixel = float;
    static constexpr ImageSize size{23, 14};
    static constexpr Vector2<unsigned> tile{14, 12};
    static constexpr std::uint64_t passes = 1;
    static constexpr auto work = "cufftExecR2C";

    SmallCrossCorrelation(HostImage& image, const Placement& placement)
        : CrossCorrelationRun(image, randomImage<float>({3, 2}, 9), 1, placement) {}
};

/// A template as it is, and turned with its mask.
struct SmallTemplateMatching : MatchingRun {
    using Tile = Vector3<unsigned>;
    using Pixel = float;
    static constexpr ImageSize size{9, 7, 6};
    static constexpr Tile tile{8, 20, 20};
    static constexpr std::uint64_t passes = 1;
    static constexpr auto work = "cufftExecR2C";
    static inline const HostImage pattern = randomImage<float>({3, 3, 2}, 9);

    SmallTemplateMatching(HostImage& image, const Placement3d& placement)
        : MatchingRun(image, pattern, VoxelTypes::uint8, placement, tableOf({{"phi", {0, 0.5}}})) {}
};

/// Those that the tile driver runs, with a step for each upload, pass and download.
using DrivenFilterRuns = ::testing::Types<SmallBoxFilter, SmallMedianFilter, SquareErosion, DiamondOpening,
                                          DiamondClosing, Gaussian, FlatGaussian>;

template <typename... Runs>
auto withCorrelations(::testing::Types<Runs...>)
    -> ::testing::Types<Runs..., SmallCrossCorrelation, SmallTemplateMatching>;
/// All of them.
using SmallFilterRuns = decltype(withCorrelations(DrivenFilterRuns{}));

/// A typed test over them.
template <typename Filter>
class SmallFilterRunTest : public ::testing::Test {
protected:
    using Tile = typename Filter::Tile;

    /// check(run, placement) with the images in each placement, whole and in tiles.
    template <typename Check>
    void onAllPlacements(const Check& check) {
        test::onAllPlacements(tiles_, [&](const PlacementOf<Tile>& placement) {
            Filter run(image_, placement);
            check(run, placement);
        });
    }

    HostImage image_ = randomImage<typename Filter::Pixel>(Filter::size, 8);
    const std::vector<Tile> tiles_{Tile{}, Filter::tile};
};

}  // namespace zel::test
