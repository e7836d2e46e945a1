#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <thread>

#include "DeviceFixture.h"
#include "NppMorphologyCalls.h"

// Passes that follow each other are held back and run together. A program must see what it would see if each ran in
// its call, which is how they run where red zones are watched.

namespace zel::test {
namespace {

using host::DeviceArray;
using host::DeviceTest;
using host::ScopedTestModes;
using Bytes = std::vector<unsigned char>;

constexpr NppiPoint origin{0, 0}, centre{1, 1};
constexpr NppiSize mask3x3{3, 3};

/// Planes of an image in one allocation with bytes between the rows, and what is done with them.
template <typename T>
class Planes {
public:
    Planes(NppiSize size, int step, std::size_t bytes, unsigned seed)
        : size_(size), step_(step), memory_(randomPixels(bytes, seed)), mask_({0, 1, 0, 1, 1, 1, 0, 1, 0}) {}

    T* at(std::size_t offset) const { return memory_.get() + offset / sizeof(T); }
    Npp8u* mask() const { return mask_.get(); }

    NppStatus pass(bool dilate, bool square, std::size_t from, std::size_t to, cudaStream_t stream = nullptr) const {
        NppStreamContext context{};
        context.hStream = stream;
        constexpr auto functions = morphologyFunctions<T>();
        if (square) {
            return functions.first[dilate](at(from), step_, size_, origin, at(to), step_, size_, NPP_BORDER_REPLICATE,
                                           context);
        }
        return functions.second[dilate](at(from), step_, size_, origin, at(to), step_, size_, mask_.get(), mask3x3,
                                        centre, NPP_BORDER_REPLICATE, context);
    }

    NppStatus passWithoutTarget() const {
        return morphologyFunctions<T>().first[0](at(0), step_, size_, origin, nullptr, step_, size_,
                                                 NPP_BORDER_REPLICATE, {});
    }

    /// What a look by pointer shows: no call that could make held passes run.
    Bytes bytes() const {
        const auto* const first = reinterpret_cast<const unsigned char*>(memory_.get());
        return {first, first + count_ * sizeof(T)};
    }

private:
    std::vector<T> randomPixels(std::size_t bytes, unsigned seed) {
        count_ = bytes / sizeof(T);
        std::mt19937 random(seed);
        std::vector<T> pixels(count_);
        for (T& pixel : pixels) {
            pixel = static_cast<T>(random());
            // Now and then any bits: NaN, infinity, zeros of both signs.
            const std::uint32_t bits = std::array{0x7FC00001u, 0xFF800000u, 0x80000000u, 0xFFFFFFFFu}[random() % 4];
            if (random() % 8 == 0) std::memcpy(&pixel, &bits, sizeof pixel);
        }
        return pixels;
    }

    NppiSize size_;
    int step_;
    std::size_t count_ = 0;
    DeviceArray<T> memory_;
    DeviceArray<Npp8u> mask_;
};

/// Calls that others than the passes may make in between; after each, the passes before it have been run.
template <typename T>
std::vector<std::function<void(const Planes<T>&)>> interruptions() {
    return {
        [](const auto& planes) {
            T pixel;
            cudaMemcpy(&pixel, planes.at(0), sizeof pixel, cudaMemcpyDeviceToHost);
        },
        [](const auto& planes) { cudaMemsetAsync(planes.at(0), 200, 40 * sizeof(T)); },
        [](const auto& planes) { cudaMemsetAsync(planes.mask(), 1, 1); },
        [](const auto&) { const DeviceArray<T> other(1000); },
        [](const auto&) { cudaFree(nullptr); },
        [](const auto&) { cudaGetLastError(); },
        [](const auto&) {
            std::size_t free = 0, total = 0;
            cudaMemGetInfo(&free, &total);
        },
        [](const auto&) {
            cudaStream_t stream = nullptr;
            cudaStreamCreate(&stream);
            cudaStreamDestroy(stream);
        },
        [](const auto&) {
            cudaDeviceSynchronize();
            cudaStreamSynchronize(nullptr);
        },
        [](const auto&) { std::thread([] { cudaSetDevice(0); }).join(); },
        [](const auto&) { const ScopedTestModes modes(host::testModes()); },
        // Calls of the passes' own functions that are refused.
        [](const auto& planes) { EXPECT_EQ(planes.passWithoutTarget(), NPP_NULL_POINTER_ERROR); },
        [](const auto& planes) {
            host::injectFault({.call = "", .nth = 1, .kind = host::FaultKind::refused, .status = 0});
            EXPECT_NE(planes.pass(false, false, 0, 0), NPP_SUCCESS);
        },
        [](const auto&) {
            host::injectFault({.call = "cudaDeviceSynchronize", .nth = 1, .kind = host::FaultKind::refused});
            EXPECT_NE(cudaDeviceSynchronize(), cudaSuccess);
            cudaGetLastError();
        },
    };
}

/// All that a program could see of its memory, and how many calls it made.
struct Seen {
    std::vector<Bytes> looks;
    std::uint64_t calls = 0;
};

template <typename T>
Seen runRandomPasses(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    const bool small = seed % 4 == 0, longChains = seed % 5 == 0;
    const NppiSize size{static_cast<int>(1 + below(small ? 6 : 300)), static_cast<int>(1 + below(small ? 6 : 120))};
    const std::size_t step = (static_cast<std::size_t>(size.width) + below(5)) * sizeof(T);
    const std::size_t plane = step * static_cast<std::size_t>(size.height);
    // The fourth overlaps the first two.
    const std::array<std::size_t, 4> offsets{0, plane, 2 * plane, plane / 2 / sizeof(T) * sizeof(T)};
    const Planes<T> planes(size, static_cast<int>(step), 3 * plane, seed);
    cudaStream_t stream = nullptr;
    if (seed % 3 == 0) {
        EXPECT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    }

    Seen seen;
    host::resetCallCounts();
    const auto interrupt = [&, all = interruptions<T>()] {
        all[below(all.size())](planes);
        seen.looks.push_back(planes.bytes());
    };
    for (std::size_t chain = 0, first = 0; chain != 12; ++chain) {
        const bool dilate = below(2) == 0, square = below(2) == 0;
        const std::size_t second = 1 + below(2);
        // From the first plane to the second, and on to a third or back.
        std::array<std::size_t, 2> targets{first == second ? 0 : second, below(2) == 0 ? first : below(4)};
        const std::size_t passes = 1 + below(longChains ? 150 : 12);
        for (std::size_t done = 0, from = first; done != passes; ++done) {
            const std::size_t to = targets[done % 2];
            const auto apart = [&](std::size_t a, std::size_t b) { return a < 3 && b < 3 ? a != b : a + b == 5; };
            if (!apart(from, to)) break;  // no order of the pixels is promised
            EXPECT_EQ(planes.pass(dilate, square, offsets[from], offsets[to], below(9) == 0 ? nullptr : stream),
                      NPP_SUCCESS);
            if (below(8) != 0) {
                EXPECT_EQ(below(2) == 0 ? cudaDeviceSynchronize() : cudaStreamSynchronize(stream), cudaSuccess);
            }
            if (below(longChains ? 100 : 12) == 0) interrupt();
            from = first = to;
        }
        if (below(2) == 0) interrupt();
    }
    if (stream != nullptr) cudaStreamDestroy(stream);
    cudaFree(nullptr);
    seen.looks.push_back(planes.bytes());
    seen.calls = host::callCount();
    return seen;
}

template <typename T>
class NppPassChainTest : public DeviceTest {};
using PixelTypes = ::testing::Types<Npp8u, Npp16u, Npp32f>;
TYPED_TEST_SUITE(NppPassChainTest, PixelTypes);

TYPED_TEST(NppPassChainTest, ShowsWhatSinglePassesWould) {
    for (unsigned seed = 1; seed <= 80; ++seed) {
        SCOPED_TRACE(::testing::Message() << "seed " << seed);
        const Seen seen = runRandomPasses<TypeParam>(seed);
        const ScopedTestModes modes({.redZones = true});
        const Seen expected = runRandomPasses<TypeParam>(seed);
        ASSERT_EQ(seen.calls, expected.calls);
        ASSERT_EQ(seen.looks.size(), expected.looks.size());
        for (std::size_t i = 0; i != seen.looks.size(); ++i)
            ASSERT_TRUE(seen.looks[i] == expected.looks[i]) << "look " << i;
    }
}

/// Both buffers after passes from the first of three planes to the second, and on to a third or back.
template <typename T>
Bytes afterPasses(NppiSize size, bool square, int passes, bool goBack) {
    const std::size_t step = static_cast<std::size_t>(size.width + 10) * sizeof(T);
    const std::size_t plane = step * static_cast<std::size_t>(size.height), third = goBack ? 0 : 2 * plane;
    const Planes<T> planes(size, static_cast<int>(step), 3 * plane, 7);
    for (int done = 0; done != passes; ++done) {
        const std::size_t from = done % 2 == 1 ? plane : done == 0 ? 0 : third;
        EXPECT_EQ(planes.pass(false, square, from, done % 2 == 0 ? plane : third), NPP_SUCCESS);
    }
    cudaFree(nullptr);
    return planes.bytes();
}

template <typename T>
void expectBuffersOfSinglePasses(NppiSize size, int passes) {
    for (const bool square : {false, true}) {
        for (const bool goBack : {false, true}) {
            SCOPED_TRACE(::testing::Message() << passes << " passes, square " << square << ", and back " << goBack);
            const Bytes together = afterPasses<T>(size, square, passes, goBack);
            const ScopedTestModes modes({.redZones = true});
            ASSERT_TRUE(together == afterPasses<T>(size, square, passes, goBack));
        }
    }
}

// Images that are cut into several slabs and strips.
TYPED_TEST(NppPassChainTest, FillsBothBuffersOfLargeImages) {
    for (const int passes : {3, 7, 26}) expectBuffersOfSinglePasses<TypeParam>({2600, 500}, passes);
}

using PassChainTest = DeviceTest;

TEST_F(PassChainTest, FillsBothBuffersOfImagesBeyondTheCaches) {
    expectBuffersOfSinglePasses<Npp8u>({4100, 3000}, 3);
}

// Else the tests above compare nothing.
TEST_F(PassChainTest, WaitsAcrossOneSynchronisation) {
    const Planes<Npp8u> planes({64, 64}, 64, 3 * 4096, 1);
    const Bytes before = planes.bytes();
    for (int pass = 0; pass != 5; ++pass) {
        EXPECT_EQ(planes.pass(true, true, pass % 2 * 4096, (pass + 1) % 2 * 4096), NPP_SUCCESS);
        EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    }
    EXPECT_TRUE(planes.bytes() == before);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_FALSE(planes.bytes() == before);
}

// What a program may look at, or change, as soon as it has synchronised.
TEST_F(PassChainTest, RunsAtOnceFromAndIntoTheHostsMemory) {
    Bytes host(4096, 1);
    host[2080] = 9;
    const Planes<Npp8u> planes({64, 64}, 64, 3 * 4096, 1);
    Npp8u* const stops[] = {host.data(), planes.at(0), planes.at(4096), host.data()};
    for (int pass = 0; pass != 3; ++pass) {
        EXPECT_EQ(nppiDilate3x3Border_8u_C1R_Ctx(stops[pass], 64, {64, 64}, origin, stops[pass + 1], 64, {64, 64},
                                                 NPP_BORDER_REPLICATE, {}),
                  NPP_SUCCESS);
        if (pass == 0) host[2080] = 1;  // read by then
    }
    EXPECT_EQ(std::ranges::count(host, 9), 49);
}

}  // namespace
}  // namespace zel::test
