// What holds for every filter on every platform.

#include "ImagesOfAllKinds.h"
#include "SmallFilterRuns.h"

using namespace zel;
using namespace zel::test;

namespace {

template <typename Filter>
class FilterLawsTest : public SmallFilterRunTest<Filter> {};
TYPED_TEST_SUITE(FilterLawsTest, SmallFilterRuns);

template <typename Filter>
class DrivenFilterLawsTest : public SmallFilterRunTest<Filter> {};
TYPED_TEST_SUITE(DrivenFilterLawsTest, DrivenFilterRuns);

}  // namespace

TYPED_TEST(DrivenFilterLawsTest, TakesAStepForEachUploadPassAndDownload) {
    this->onAllPlacements([](TypeParam& run, const auto& placement) {
        const std::uint64_t upload = placement.inputOnDevice ? 0 : 1;
        const std::uint64_t download = placement.outputOnDevice && !placement.tiled() ? 0 : 1;  // or margins to cut off
        const std::uint64_t blocks = placement.tiled() ? TypeParam::blocks : 1;
        EXPECT_EQ(stepsOf(run), blocks * (upload + TypeParam::passes + download));
    });
}

TYPED_TEST(DrivenFilterLawsTest, EndsAtTheNextPollWhenCancelled) {
    this->onAllPlacements([](TypeParam& run, const auto& placement) { expectCancelledAtEachStep(run, placement); });
}

TYPED_TEST(FilterLawsTest, GoesFromImagesOfAnyKindToImagesOfAnyKind) {
    using T = typename TypeParam::Pixel;
    ImagesOfAllKinds<T> images(this->image_, TypeParam::size);
    for (const auto& tile : this->tiles_) {
        TypeParam run(this->image_, {false, false, tile});
        const auto expected = resultOf<T>(run);
        for (ImageModel* const source : images.all()) {
            for (ImageModel* const target : images.all()) {
                if (target == source) continue;
                run.filter.inputImage = source;
                outputOf(run.filter) = target;
                EXPECT_EQ(resultOf<T>(run), expected);
                copyRows(this->image_, *target);
            }
        }
    }
}

TYPED_TEST(FilterLawsTest, UsesAndKeepsTheCallersStream) {
    TypeParam run(this->image_, {});
    CallersStream callers;
    run.filter.cudaContext = &callers.context;
    run.filter.run();
    StepWatch cancelled(&run.filter, 1);
    EXPECT_THROW(run.filter.run(&cancelled), ExceptionCancelation);
}
