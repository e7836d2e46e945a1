#include "BoxFilterRun.h"
#include "DocsTable.h"
#include "GaussianFilterRun.h"
#include "MatchingRun.h"
#include "MedianFilterRun.h"
#include "MorphologyRun.h"

using namespace zel;
using namespace zel::test;

namespace {

using Pixels = std::vector<std::uint16_t>;

/// A page's table: an image of one row, and below it what filters make of the image.
class Page {
public:
    Page(const std::string& page, const std::string& name)
        : table_(page, name), pixels_(table_.as<std::uint16_t>()), image_(VoxelTypes::uint16, {table_.columns, 1}) {
        if (pixels_.size() >= table_.columns)
            std::copy_n(pixels_.begin(), table_.columns, voxels<std::uint16_t>(image_));
    }

    HostImage& image() { return image_; }

    template <typename Run>
    void expectNextRow(Run&& run) {
        const auto first = static_cast<std::ptrdiff_t>(++row_ * table_.columns);
        ASSERT_LT(row_, table_.rows);
        EXPECT_EQ(
            resultOf<std::uint16_t>(run),
            Pixels(pixels_.begin() + first, pixels_.begin() + first + static_cast<std::ptrdiff_t>(table_.columns)));
    }

private:
    DocsTable table_;
    Pixels pixels_;
    HostImage image_;
    std::size_t row_ = 0;
};

}  // namespace

TEST(DocsTest, ShowsWhatTheFiltersGive) {
    Page box("box-filter.md", "3 x 1"), morphology("morphology.md", "radius 1"),
        gaussian("gaussian-filter.md", "sigma 0.8"), median("median-filter.md", "radius 1"),
        wideMedian("median-filter.md", "radius 2");
    box.expectNextRow(BoxFilterRun(box.image(), 3, 1, {}));
    morphology.expectNextRow(MorphologyRun<cuda::CudaErosion2d>(morphology.image(), 1, true, {}));
    morphology.expectNextRow(MorphologyRun<cuda::CudaDilation2d>(morphology.image(), 1, true, {}));
    morphology.expectNextRow(MorphologyRun<cuda::CudaOpening2d>(morphology.image(), 1, true, {}));
    morphology.expectNextRow(MorphologyRun<cuda::CudaClosing2d>(morphology.image(), 1, true, {}));
    median.expectNextRow(MedianFilterRun(median.image(), 1, {}));
    wideMedian.expectNextRow(MedianFilterRun(wideMedian.image(), 2, {}));
    gaussian.expectNextRow(GaussianFilterRun(gaussian.image(), VoxelTypes::uint16, {{0.8, 0, 0}, 1.5}, {}));
}

TEST(DocsTest, ShowsWhatAMatchingGives) {
    const DocsTable table("template-matching.md", "1 2 1");
    ASSERT_EQ(table.numbers.size(), 3 * table.columns);
    HostImage image(VoxelTypes::float32, {table.columns, 1, 1}), pattern(VoxelTypes::float32, {3, 1, 1});
    std::copy_n(table.numbers.begin(), table.columns, voxels<float>(image));
    std::copy_n(std::array{1, 2, 1}.begin(), 3, voxels<float>(pattern));
    MatchingRun run(image, pattern, VoxelTypes::uint8, {}, tableOf({{"scaleX", {1, 5.0 / 3}}}));
    const auto scores = resultOf<float>(run);
    for (std::size_t x = 0; x < table.columns; ++x) {
        EXPECT_NEAR(scores[x], table.numbers[table.columns + x], 6e-4) << "x = " << x;
        EXPECT_EQ(run.rows<std::uint8_t>()[x], table.numbers[2 * table.columns + x]) << "x = " << x;
    }
}
