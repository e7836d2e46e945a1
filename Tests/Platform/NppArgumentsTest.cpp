#include <dlfcn.h>
#include <malloc.h>
#include <nppi_filtering_functions.h>
#include <nppi_morphological_operations.h>
#include <sys/resource.h>

#include <cstdlib>

#include "DeviceFixture.h"
#include "NppImage.h"
#include "ProcessMemory.h"

namespace zel::test {
namespace {

struct Call {
    const Npp16u* src;
    int srcStep;
    Npp16u* dst;
    int dstStep;
    const Npp8u* mask;
    NppiSize srcSize{8, 6}, roi{8, 6}, maskSize{3, 3};
    NppiPoint srcOffset{0, 0}, anchor{1, 1};
    NppiBorderType border = NPP_BORDER_REPLICATE;

    NppStatus box() const {
        return nppiFilterBoxBorder_16u_C1R_Ctx(src, srcStep, srcSize, srcOffset, dst, dstStep, roi, maskSize, anchor,
                                               border, {});
    }
    NppStatus square() const {
        return nppiErode3x3Border_16u_C1R_Ctx(src, srcStep, srcSize, srcOffset, dst, dstStep, roi, border, {});
    }
    NppStatus masked() const {
        return nppiDilateBorder_16u_C1R_Ctx(src, srcStep, srcSize, srcOffset, dst, dstStep, roi, mask, maskSize, anchor,
                                            border, {});
    }
};

/// Images of 1s and of 2s, and a full mask.
class NppArgumentsTest : public ::testing::Test {
protected:
    Call call() { return {src_.device(), src_.step(), dst_.device(), dst_.step(), mask_.get()}; }
    Npp16u pixel() {
        dst_.download();
        return dst_.at(3, 3);
    }

    NppImage<Npp16u> src_{{8, 6}, 1}, dst_{{8, 6}, 2};
    const host::DeviceArray<Npp8u> mask_{9, 1};
};

TEST_F(NppArgumentsTest, FaultyOnesGiveTheVendorsCodesAndWriteNothing) {
    enum Callees { all, withMaskSize, withMask };
    Npp16u onHost[200]{};
    const auto expectStatus = [&](int status, Callees callees, auto change) {
        Call faulty = call();
        change(faulty);
        EXPECT_EQ(faulty.masked(), status);
        EXPECT_EQ(callees == withMask ? status : faulty.box(), status);
        EXPECT_EQ(callees == all ? faulty.square() : status, status);
    };
    expectStatus(-8, all, [](Call& c) { c.src = nullptr; });
    expectStatus(-8, all, [](Call& c) { c.dst = nullptr, c.roi = {0, 0}; });
    expectStatus(-8, withMask, [](Call& c) { c.mask = nullptr, c.roi = {0, 6}; });
    expectStatus(-6, all, [](Call& c) { c.srcSize.width = 0; });
    expectStatus(-6, all, [](Call& c) { c.roi.height = -1; });
    expectStatus(-14, all, [](Call& c) { c.srcStep = 0; });
    expectStatus(-14, all, [](Call& c) { c.dstStep = -28; });
    expectStatus(-108, all, [](Call& c) { c.srcStep += 1; });
    expectStatus(-37, all, [](Call& c) { c.dstStep = 14; });
    for (const NppiPoint offset : {NppiPoint{1, 0}, NppiPoint{0, 1}})
        expectStatus(-1020, all, [&](Call& c) { c.srcOffset = offset; });
    expectStatus(-33, withMaskSize, [](Call& c) { c.maskSize.width = 0; });
    expectStatus(-33, withMaskSize, [](Call& c) { c.maskSize.height = 0; });
    expectStatus(-34, withMaskSize, [](Call& c) { c.anchor.x = 3; });
    expectStatus(-34, withMaskSize, [](Call& c) { c.anchor.y = -1; });
    expectStatus(-9999, all, [](Call& c) { c.border = NPP_BORDER_MIRROR; });
    {
        const host::ScopedTestModes separate({.separateMemory = true});
        expectStatus(-1031, all, [&](Call& c) { c.src = onHost; });
        expectStatus(-1031, withMask, [&](Call& c) { c.mask = reinterpret_cast<const Npp8u*>(onHost); });
    }
    expectStatus(-1031, all, [](Call& c) { c.dst += 7; });
    expectStatus(-1031, withMask, [](Call& c) { c.maskSize = {4, 3}; });
    expectStatus(-1031, withMask, [](Call& c) { c.maskSize = {2147483647, 2147483647}; });
    EXPECT_EQ(pixel(), 2);
    expectStatus(0, all, [](Call&) {});
    EXPECT_EQ(pixel(), 1);
    host::injectFault({.call = "nppiFilterBoxBorder_16u_C1R_Ctx", .status = NPP_MEMORY_ALLOCATION_ERR});
    EXPECT_EQ(Call{}.box(), NPP_MEMORY_ALLOCATION_ERR) << "a refused call does not look at its arguments";
}

TEST(NppMemoryDeathTest, FilterWithoutMemoryForItsWorkBufferIsRefused) {
    if (ProcessMemory().isSanitized()) GTEST_SKIP() << "no limit can be set";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto filterWithoutMemory = [] {
        mallopt(M_ARENA_MAX, 1);  // further ones reserve address space that the limit would not reach
        constexpr NppiSize size{60000, 8};
        NppImage<float> src(size), dst(size);
        const auto filter = [&] {
            return nppiFilterBoxBorder_32f_C1R_Ctx(src.device(), src.step(), size, {0, 0}, dst.device(), dst.step(),
                                                   size, {60001, 3}, {30000, 1}, NPP_BORDER_REPLICATE, {});
        };
        rlimit before{};
        getrlimit(RLIMIT_AS, &before);
        const rlimit little{static_cast<rlim_t>(ProcessMemory().addressSpaceBytes + (1 << 19)), before.rlim_max};
        setrlimit(RLIMIT_AS, &little);
        const NppStatus without = filter();
        setrlimit(RLIMIT_AS, &before);
        std::_Exit(without == NPP_MEMORY_ALLOCATION_ERR && filter() == NPP_SUCCESS ? 0 : 1);
    };
    EXPECT_EXIT(filterWithoutMemory(), ::testing::ExitedWithCode(0), "");
}

// An application may link the vendor's library too, whose functions must not take the place of ours.
TEST(NppNamesTest, AreNotTheVendorsAtLinking) {
    for (const char* name : {"nppiFilterBoxBorder_8u_C1R_Ctx", "nppiErode3x3Border_8u_C1R_Ctx",
                             "nppiDilateBorder_32f_C1R_Ctx", "cudaMalloc"})
        EXPECT_EQ(dlsym(RTLD_DEFAULT, name), nullptr) << name;
}

}  // namespace
}  // namespace zel::test
