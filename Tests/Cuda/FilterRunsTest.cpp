#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <array>

#include "BoxFilterRun.h"
#include "DisturbedRun.h"
#include "GaussianFilterRun.h"
#include "Messages.h"
#include "MorphologyRun.h"
#include "RunChecks.h"
#include "zel/AlgoInfo.h"
#include "zel/Exceptions.h"
#include "zel/ImageModelSizeProxy.h"

using namespace zel;
using namespace zel::test;

namespace {

// Small runs that take each of their filters' ways. `blocks` is how many the image is cut into with the margins that
// the filter needs, counted by hand; `work` is a call that does the filtering.

struct Box : BoxFilterRun {
    using Pixel = std::int16_t;
    static constexpr ImageSize size{60, 50};
    static constexpr Vector2<unsigned> tile{22, 18};
    static constexpr std::uint64_t blocks = 4 * 3, passes = 1;
    static constexpr auto work = "nppiFilterBoxBorder_16s_C1R_Ctx";

    Box(HostImage& image, const Placement& placement) : BoxFilterRun(image, 5, 3, placement) {}
};

template <typename Algo, typename T, unsigned radius, bool square>
struct Morphology : MorphologyRun<Algo> {
    using Pixel = T;
    static constexpr ImageSize size{60, 50};
    static constexpr std::uint64_t passes = 1;

    Morphology(HostImage& image, const Placement& placement) : MorphologyRun<Algo>(image, radius, square, placement) {}
};

struct SquareErosion : Morphology<cuda::CudaErosion2d, std::uint8_t, 2, true> {
    static constexpr Vector2<unsigned> tile{22, 20};
    static constexpr std::uint64_t blocks = 4 * 3;
    static constexpr auto work = "nppiErode3x3Border_8u_C1R_Ctx";

    using Morphology::Morphology;
};

struct DiamondOpening : Morphology<cuda::CudaOpening2d, std::uint16_t, 2, false> {
    static constexpr Vector2<unsigned> tile{34, 30};
    static constexpr std::uint64_t blocks = 2 * 2;
    static constexpr auto work = "nppiErodeBorder_16u_C1R_Ctx";

    using Morphology::Morphology;
};

struct DiamondClosing : Morphology<cuda::CudaClosing2d, float, 3, false> {
    static constexpr Vector2<unsigned> tile{34, 30};
    static constexpr std::uint64_t blocks = 3 * 3;
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

template <typename Filter>
class FilterRuns : public ::testing::Test {
protected:
    using Pixel = typename Filter::Pixel;
    using Tile = std::remove_const_t<decltype(Filter::tile)>;
    using Place = PlacementOf<Tile>;
    using Disturbed = DisturbedRun<Filter, Pixel>;

    static std::vector<Place> placements() {
        std::vector<Place> all = allPlacements<Tile>({});
        for (const Place& placement : allPlacements<Tile>(Filter::tile)) all.push_back(placement);
        return all;
    }

    /// check(run, placement), disturbed in one way after the other.
    template <typename Check>
    void onAllPlacements(const Check& check) {
        for (const Place& placement : placements()) {
            SCOPED_TRACE(testing::Message() << "device " << placement.inputOnDevice << placement.outputOnDevice
                                            << ", tiled " << placement.tiled());
            Filter run(image_, placement);
            check(run, placement);
        }
    }

    HostImage image_ = randomImage<Pixel>(Filter::size, 8);
};

using Filters = ::testing::Types<Box, SquareErosion, DiamondOpening, DiamondClosing, Gaussian, FlatGaussian>;
TYPED_TEST_SUITE(FilterRuns, Filters);

/// The same voxels in images of many kinds: rows with gaps, rows only, a part of a part, a part on the device.
template <typename T>
class ImagesOfAllKinds {
public:
    ImagesOfAllKinds(const HostImage& content, const ImageSize& size)
        : size_(size), rows_(HostImage(voxelTypeOf<T>, size)) {
        for (ImageModel* const image : all()) copyRows(content, *image);
    }

    std::array<ImageModel*, 4> all() { return {&withGaps_, &rows_, &part_, &devicePart_}; }

private:
    ImageModelSizeProxy partOf(ImageModel& image, std::size_t x, std::size_t y, std::size_t z) const {
        return {&image, x, size_.x, y, size_.y, z, size_.z, 0, 1, 0, 1};
    }

    ImageSize size_;
    std::vector<T> memory_ = std::vector<T>((size_.x + 13) * size_.y * size_.z);
    HostImage withGaps_{voxelTypeOf<T>, size_, memory_.data(), (size_.x + 13) * sizeof(T)};
    RowsOnlyImage rows_;
    HostImage large_{voxelTypeOf<T>, {size_.x + 30, size_.y + 30, size_.z + 5}};
    ImageModelSizeProxy outer_{&large_, 5, size_.x + 20, 4, size_.y + 20, 1, size_.z + 3, 0, 1, 0, 1};
    ImageModelSizeProxy part_ = partOf(outer_, 11, 13, 2);
    std::unique_ptr<ImageModel> deviceLarge_ = onDevice(large_);
    ImageModelSizeProxy devicePart_ = partOf(*deviceLarge_, 7, 9, 3);
};

}  // namespace

TYPED_TEST(FilterRuns, TakeAStepForEachUploadPassAndDownload) {
    this->onAllPlacements([](TypeParam& run, const auto& placement) {
        const std::uint64_t upload = placement.inputOnDevice ? 0 : 1;
        const std::uint64_t download = placement.outputOnDevice && !placement.tiled() ? 0 : 1;  // or margins to cut off
        const std::uint64_t blocks = placement.tiled() ? TypeParam::blocks : 1;
        host::resetCallCounts();
        const std::uint64_t steps = stepsOf(run);
        EXPECT_EQ(steps, blocks * (upload + TypeParam::passes + download));
        EXPECT_GE(host::callCount("cudaDeviceSynchronize"), steps) << "each ends in one";
    });
}

TYPED_TEST(FilterRuns, CancelledAtEachPollEndThereAndLeaveNothing) {
    this->onAllPlacements([](TypeParam& run, const auto& placement) {
        typename TestFixture::Disturbed(run).cancelAtEachStep(!placement.tiled() && !placement.outputOnDevice);
    });
}

TYPED_TEST(FilterRuns, ReportEachRefusedCallAndLeaveNothing) {
    std::vector<const char*> calls{"cudaGetDeviceCount",     "cudaGetDevice",        "cudaGetDeviceProperties",
                                   "cudaDeviceGetAttribute", "cudaStreamCreate",     "cudaStreamGetFlags",
                                   "cudaStreamSynchronize",  "cudaMalloc",           "cudaMallocPitch",
                                   "cudaMalloc3D",           "cudaMemcpyAsync",      "cudaMemcpy2DAsync",
                                   "cudaMemcpy3DAsync",      "cudaDeviceSynchronize"};
    if constexpr (TypeParam::passes == 1) {  // a Gaussian's launches go unchecked
        calls.insert(calls.end(), {"cudaLaunchKernelEx", TypeParam::work, "nppiDilate3x3Border_8u_C1R_Ctx",
                                   "nppiDilateBorder_16u_C1R_Ctx", "nppiErodeBorder_32f_C1R_Ctx"});
    }
    this->onAllPlacements(
        [&](TypeParam& run, const auto&) { typename TestFixture::Disturbed(run).refuseEachCall(calls); });
}

TYPED_TEST(FilterRuns, ReportAFailedDeviceUntilItIsReset) {
    TypeParam run(this->image_, {});
    typename TestFixture::Disturbed(run).failDeviceAtEach(TypeParam::work);
}

TYPED_TEST(FilterRuns, ReportAFullOrMissingDevice) {
    TypeParam run(this->image_, {});
    const auto message = [&] { return messageOf<RuntimeError>([&] { run.filter.run(); }); };
    const std::uint64_t peak = peakBytesOf(run), liveBefore = host::deviceUse().liveBytes;
    {
        const host::ScopedDevices small(1, peak - 1);
        EXPECT_THAT(message(), testing::HasSubstr("out of memory"));
        EXPECT_EQ(host::deviceUse().liveBytes, liveBefore);
        TypeParam tiled(this->image_, {false, false, TypeParam::tile});
        EXPECT_NO_THROW(tiled.filter.run()) << "tiles fit";
    }
    const host::ScopedDevices none(0, 0);
    EXPECT_EQ(message(), "No runner is available for " + run.filter.classInfo()->className());
}

TYPED_TEST(FilterRuns, HideNoFaultThatTestModesBringOut) {
    TypeParam plain(this->image_, {});
    plain.filter.run();
    const host::TestModes modes[] = {{.deferredStreams = true},
                                     {.protectedMemory = true},
                                     {.poison = true, .redZones = true},
                                     {.deferredStreams = true, .redZones = true, .blockShuffleSeed = 17}};
    for (const host::TestModes& mode : modes) {
        const host::ScopedTestModes scoped(mode);
        expectEverywhere(plain.template result<typename TestFixture::Pixel>(),
                         std::vector{typename TestFixture::Tile{}, TypeParam::tile},
                         [&](const auto& placement) { return TypeParam(this->image_, placement); });
    }
}

TYPED_TEST(FilterRuns, GoFromImagesOfAnyKindToImagesOfAnyKind) {
    using T = typename TestFixture::Pixel;
    ImagesOfAllKinds<T> images(this->image_, TypeParam::size);
    for (const auto& tile : {typename TestFixture::Tile{}, TypeParam::tile}) {
        TypeParam run(this->image_, {false, false, tile});
        run.filter.run();
        const auto expected = run.template result<T>();
        for (ImageModel* const source : images.all()) {
            for (ImageModel* const target : images.all()) {
                if (target == source) continue;
                run.filter.inputImage = source;
                run.filter.outputImage = target;
                run.filter.run();
                EXPECT_EQ(readAll<T>(*target), expected);
                copyRows(this->image_, *target);
            }
        }
    }
}

TYPED_TEST(FilterRuns, UseAndKeepTheCallersStream) {
    TypeParam run(this->image_, {});
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    CudaContext context{0, stream};
    run.filter.cudaContext = &context;
    const std::uint64_t before = host::callCount("cudaStreamCreate");
    run.filter.run();
    StepWatch cancelled(&run.filter, 1);
    EXPECT_THROW(run.filter.run(&cancelled), ExceptionCancelation);
    EXPECT_EQ(host::callCount("cudaStreamCreate"), before);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}
