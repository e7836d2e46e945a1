#include "zel/BlockCutterManager.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "Messages.h"

using namespace zel;
using Size = Vector3<unsigned>;

namespace {

/// Origin, size and overlaps with the previous and the next block, along one axis.
using Block = std::array<unsigned, 4>;
using Blocks = std::vector<Block>;

/// The blocks along x of a cut that leaves y and z alone.
Blocks cutAlongX(unsigned image, unsigned block, unsigned previous, unsigned next) {
    std::unique_ptr<BlockCutterManager> cutter;
    BlockCutterManager::allocateAndInitialize(cutter, {image, 1, 1}, {block, 1, 1}, {1, 1, 1}, {previous, 0, 0},
                                              {next, 0, 0});
    Blocks blocks;
    for (unsigned i = 0; i < cutter->getNumOfBlocks().x; ++i) {
        blocks.push_back({cutter->getBlockOrigin(i, 0, 0).x, cutter->getBlockSize(i, 0, 0).x,
                          cutter->getBlockPreviousOverlapSize(i, 0, 0).x, cutter->getBlockNextOverlapSize(i, 0, 0).x});
    }
    return blocks;
}

}  // namespace

TEST(BlockCutterManagerTest, CutsSmallCasesAsByHand) {
    EXPECT_EQ(cutAlongX(10, 4, 0, 0), (Blocks{{0, 4, 0, 0}, {4, 4, 0, 0}, {8, 2, 0, 0}}));
    EXPECT_EQ(cutAlongX(10, 6, 1, 1), (Blocks{{0, 6, 0, 1}, {4, 6, 1, 0}}));
    EXPECT_EQ(cutAlongX(10, 5, 1, 2), (Blocks{{0, 5, 0, 2}, {2, 5, 1, 2}, {4, 5, 1, 2}, {6, 4, 1, 0}}));
    // A block too small for its overlaps grows to hold one pixel between them.
    EXPECT_EQ(cutAlongX(5, 1, 1, 1), (Blocks{{0, 3, 0, 1}, {1, 3, 1, 1}, {2, 3, 1, 0}}));
    // One that covers the image is the only one, whatever the overlaps.
    EXPECT_EQ(cutAlongX(10, 10, 3, 3), (Blocks{{0, 10, 0, 0}}));
    EXPECT_EQ(cutAlongX(10, 1, 2147483648U, 2147483648U), (Blocks{{0, 10, 0, 0}}));
}

TEST(BlockCutterManagerTest, CoresCoverTheImageOnceAndMarginsStayInside) {
    std::mt19937 random(3);
    for (int repeat = 0; repeat < 2000; ++repeat) {
        const unsigned image = 1 + random() % 60, block = 1 + random() % 70;
        const unsigned before = random() % 9, behind = random() % 9;
        SCOPED_TRACE(testing::Message() << image << " in " << block << " with " << before << " and " << behind);
        const Blocks blocks = cutAlongX(image, block, before, behind);
        unsigned covered = 0;
        for (const auto& [origin, size, previous, next] : blocks) {
            const bool isFirst = covered == 0, isLast = origin + size == image;
            EXPECT_EQ(previous, isFirst ? 0 : before);
            EXPECT_EQ(next, isLast ? 0 : behind);
            EXPECT_EQ(origin + previous, covered);
            EXPECT_GT(size, previous + next);
            EXPECT_LE(size, blocks[0][1]);
            covered = origin + size - next;
        }
        EXPECT_EQ(covered, image);
    }
}

TEST(BlockCutterManagerTest, CutsEachAxisByItself) {
    std::unique_ptr<BlockCutterManager> cutter;
    const auto count =
        BlockCutterManager::allocateAndInitialize(cutter, {10, 9, 8}, {4, 3, 8}, {1, 1, 1}, {0, 0, 1}, {0, 0, 1});
    EXPECT_EQ(count, 9U);
    EXPECT_EQ(cutter->getNumOfBlocks(), (Size{3, 3, 1}));
    EXPECT_EQ(cutter->getBlockOrigin(2, 1, 0), (Size{8, 3, 0}));
    EXPECT_EQ(cutter->getBlockSize(2, 1, 0), (Size{2, 3, 8}));
}

TEST(BlockCutterManagerTest, RefusesSizesOfZero) {
    std::unique_ptr<BlockCutterManager> cutter;
    const auto message = [&](const Size& image, const Size& block) {
        return test::messageOf([&] {
            BlockCutterManager::allocateAndInitialize(cutter, image, block, {1, 1, 1}, {}, {});
        });
    };
    EXPECT_EQ(message({5, 5, 5}, {5, 0, 5}), "the block size is 5 x 0 x 5; each component must be at least 1");
    EXPECT_EQ(message({0, 5, 5}, {5, 5, 5}), "the image size is 0 x 5 x 5; each component must be at least 1");
    EXPECT_EQ(message({5, 5, 5}, {5, 5, 0}), "the block size is 5 x 5 x 0; each component must be at least 1");
}
