// What holds for every filter on every platform.

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <array>

#include "RunChecks.h"
#include "SmallFilterRuns.h"
#include "zel/ImageModelSizeProxy.h"

using namespace zel;
using namespace zel::test;

namespace {

template <typename Filter>
class FilterLawsTest : public SmallFilterRunTest<Filter> {};
TYPED_TEST_SUITE(FilterLawsTest, SmallFilterRuns);

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

TYPED_TEST(FilterLawsTest, TakesAStepForEachUploadPassAndDownload) {
    this->onAllPlacements([](TypeParam& run, const auto& placement) {
        const std::uint64_t upload = placement.inputOnDevice ? 0 : 1;
        const std::uint64_t download = placement.outputOnDevice && !placement.tiled() ? 0 : 1;  // or margins to cut off
        const std::uint64_t blocks = placement.tiled() ? TypeParam::blocks : 1;
        EXPECT_EQ(stepsOf(run), blocks * (upload + TypeParam::passes + download));
    });
}

TYPED_TEST(FilterLawsTest, EndsAtTheNextPollWhenCancelledAndRunsRightAgain) {
    this->onAllPlacements([](TypeParam& run, const auto& placement) {
        using T = typename TestFixture::Pixel;
        run.filter.run();
        const auto expected = run.template result<T>();
        expectCancelledAtEachStep(run, !placement.tiled() && !placement.outputOnDevice);
        run.filter.run();
        EXPECT_EQ(run.template result<T>(), expected);
    });
}

TYPED_TEST(FilterLawsTest, GoesFromImagesOfAnyKindToImagesOfAnyKind) {
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

TYPED_TEST(FilterLawsTest, UsesAndKeepsTheCallersStream) {
    TypeParam run(this->image_, {});
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    CudaContext context{0, stream};
    run.filter.cudaContext = &context;
    run.filter.run();
    StepWatch cancelled(&run.filter, 1);
    EXPECT_THROW(run.filter.run(&cancelled), ExceptionCancelation);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}
