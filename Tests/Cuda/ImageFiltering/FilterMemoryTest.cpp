// Peak device memory of the filters, by formula.

#include <algorithm>

#include "BoxFilterRun.h"
#include "CrossCorrelationRun.h"
#include "DeviceChecks.h"
#include "GaussianFilterRun.h"
#include "MatchingRun.h"
#include "MedianFilterRun.h"
#include "MorphologyRun.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

TEST(BoxFilterMemoryTest, HoldsTwoBuffersAndOnlyWhatItNeeds) {
    HostImage image = randomImage<std::uint8_t>({512, 300}, 2);
    const auto peak = [&](const Placement& placement) { return peakBytesOf(BoxFilterRun(image, 5, 5, placement)); };
    EXPECT_EQ(peak({false, false}), 2U * 512 * 300);
    EXPECT_EQ(peak({true, false}), 512U * 300);
    EXPECT_EQ(peak({true, true}), 0U);
    EXPECT_LE(peak({false, false, {256, 100}}), 2U * 256 * 100);
}

// The image mirrored as far as the largest tile's windows reach, besides the tile and its result.
TEST(MedianFilterMemoryTest, HoldsOneWorkBufferForAllTiles) {
    HostImage image = randomImage<std::uint16_t>({512, 300}, 2);
    const auto peak = [&](unsigned radius, const Placement& placement) {
        return peakBytesOf(MedianFilterRun(image, radius, placement));
    };
    EXPECT_EQ(peak(3, {true, true}), 0U);
    EXPECT_EQ(peak(5, {true, true}), 2U * (512 + 10) * (300 + 10));
    EXPECT_EQ(peak(5, {false, false}), 2U * (512 + 10) * (300 + 10) + 2 * 2U * 512 * 300);
    EXPECT_LE(peak(5, {false, false, {256, 100}}), 2U * (256 + 10) * (100 + 10) + 2 * 2U * 256 * 100);
    MedianFilterRun shrinking(image, 5, {false, false, {220, 130}});  // tiles at the far sides are smaller
    host::resetCallCounts();
    shrinking.filter.run();
    EXPECT_EQ(host::callCount("cudaMalloc"), 1U);
}

TEST(MorphologyMemoryTest, IsOneScratchImageAtMost) {
    HostImage image = randomImage<std::uint8_t>({512, 300}, 2);
    const auto peak = [&]<typename Algo>(unsigned radius, const Placement& placement) {
        return peakBytesOf(MorphologyRun<Algo>(image, radius, true, placement));
    };
    EXPECT_EQ(peak.operator()<CudaErosion2d>(1, {true, true}), 0U);
    EXPECT_EQ(peak.operator()<CudaErosion2d>(5, {true, true}), 512U * 300);
    EXPECT_EQ(peak.operator()<CudaOpening2d>(1, {true, true}), 512U * 300);
    EXPECT_EQ(peak.operator()<CudaOpening2d>(4, {false, false}), 3U * 512 * 300);
}

// Volumes of which each axis in turn has the largest scratch, for more lines than there are blocks or fewer.
TEST(GaussianFilterMemoryTest, HoldsBuffersKernelsAndTheScratchOfOnePass) {
    constexpr std::uint64_t taps = 5, blocks = 132, kernels = 3 * taps * 4;
    for (const ImageSize& size : {ImageSize{300, 150, 4}, {150, 300, 4}, {150, 4, 300}, {64, 40, 20}}) {
        SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << " x " << size.z);
        HostImage image = randomImage<std::uint16_t>(size, 2);
        const auto peak = [&](const Placement3d& placement, bool direct) {
            return peakBytesOf(GaussianFilterRun(image, VoxelTypes::uint16, {{1, 1, 1}, 2, direct}, placement));
        };
        // Each block has a line, mirrored at both ends, and as many offsets of 8 bytes.
        const auto scratch = [&](std::uint64_t lines, std::uint64_t length, std::uint64_t voxelBytes) {
            return std::min(lines, blocks) * (length + taps - 1) * (voxelBytes + 8);
        };
        const auto largestScratch = [&](std::uint64_t workBytes) {
            return std::max(
                {scratch(size.y, size.x, 2), scratch(size.x, size.y, workBytes), scratch(size.x, size.z, workBytes)});
        };
        const std::uint64_t volume = size.x * size.y * size.z;
        EXPECT_EQ(peak({true, true}, true), kernels + largestScratch(2));
        EXPECT_EQ(peak({true, true}, false), kernels + largestScratch(4) + 4 * volume);
        EXPECT_EQ(peak({false, true}, true), kernels + largestScratch(2) + 2 * volume);
        EXPECT_EQ(peak({false, false}, false), kernels + largestScratch(4) + (2 + 2 + 4) * volume);
        const Vector3<unsigned> half{unsigned(size.x) / 2, unsigned(size.y) / 2, unsigned(size.z) / 2};
        EXPECT_LE(peak({false, false, half}, false), kernels + largestScratch(4) + (2 + 2 + 4) * volume / 8);
    }
}

TEST(GaussianFilterCallsTest, SynchroniseAtEachStepAndReuseBuffers) {
    HostImage image = randomImage<std::uint8_t>({40, 30, 20}, 2);
    using Counts = std::pair<std::uint64_t, std::uint64_t>;
    const auto counts = [&](const Placement3d& placement) {
        GaussianFilterRun run(image, VoxelTypes::uint8, {{0, 0, 0}, 1}, placement);
        host::resetCallCounts();
        run.filter.run();
        return Counts(host::callCount("cudaDeviceSynchronize"), host::callCount("cudaMalloc3D"));
    };
    // One before the passes, and one for each of the steps.
    EXPECT_EQ(counts({false, false}), Counts(1 + 5, 3));
    EXPECT_EQ(counts({true, true}), Counts(1 + 3, 1));
    // Tiles of 16, 16 and 8 by 16 and 14 by 16 and 4. Each slice of a tile travels alone, as it has gaps in the image.
    // Only the output's buffer is made anew, at each change of height or depth.
    EXPECT_EQ(counts({false, false, {16, 16, 16}}), Counts(12 * 3 + 2 * 6 * (16 + 4), 1 + 1 + 4));
}

// An image of 300 x 200 and a template of 8 x 6 are padded to 343 x 243.
TEST(CrossCorrelationMemoryTest, IsThatOfPaddedImagesAndSpectra) {
    const auto peaks = [&]<typename T, typename R>() {
        HostImage image = randomImage<T>({300, 200}, 2);
        const HostImage pattern = randomImage<T>({8, 6}, 3);
        const auto peak = [&](int mode, const Placement& placement) {
            return peakBytesOf(CrossCorrelationRun(image, pattern, mode, placement));
        };
        const auto padded = [](std::uint64_t nx, std::uint64_t ny) { return nx * ny * sizeof(R); };
        const auto spectrum = [](std::uint64_t nx, std::uint64_t ny) { return (nx / 2 + 1) * ny * 2 * sizeof(R); };
        const std::uint64_t whole = padded(343, 243), wholeSpectrum = spectrum(343, 243);
        constexpr std::uint64_t templateAndScores = 8 * 6 * sizeof(T) + 300 * 200 * sizeof(float);
        EXPECT_EQ(peak(0, {true, true}), 2 * whole + 3 * wholeSpectrum);
        EXPECT_EQ(peak(0, {false, false}), 2 * whole + 3 * wholeSpectrum + templateAndScores);
        EXPECT_EQ(peak(1, {true, true}), 4 * whole + 5 * wholeSpectrum + padded(343, 200));
        // Of 120 x 80, padded to 125 x 81, and for the local means, from 127 x 85, to 128 x 125.
        constexpr Vector2<unsigned> tile{120, 80};
        const std::uint64_t reduction = 4096;
        EXPECT_LE(peak(0, {true, true, tile}), padded(125, 81) + 3 * spectrum(125, 81) + reduction);
        EXPECT_LE(peak(1, {true, true, tile}),
                  2 * padded(125, 81) + 3 * spectrum(125, 81) + 2 * padded(128, 125) + 3 * spectrum(128, 125));
    };
    peaks.operator()<float, float>();
    peaks.operator()<std::uint8_t, float>();
    peaks.operator()<double, double>();
}

// Seven real volumes and five half spectra of the padded size, the work area that the plans share, and what the host
// sends and takes back: template, scores, rows.
TEST(MatchingMemoryTest, IsThatOfPaddedVolumesAndSpectra) {
    const auto peaks = [&]<typename T, typename R>() {
        HostImage image = randomImage<T>({40, 30, 20}, 2);
        const HostImage pattern = randomImage<T>({8, 6, 5}, 3);
        const HostImage ones = randomImage<std::uint8_t>({8, 6, 5}, 4);
        HostImage filter(VoxelTypes::float32, {12, 11, 6});
        const auto peak = [&](const Placement3d& placement, bool filtered) {
            MatchingRun run(image, pattern, VoxelTypes::uint16, placement);
            run.filter.inputMask = &ones;
            if (filtered) run.filter.frequencyFilter = &filter;
            return peakBytesOf(run);
        };
        const auto padded = [](std::uint64_t nx, std::uint64_t ny, std::uint64_t nz) {
            const std::uint64_t spectrum = (nx / 2 + 1) * ny * nz * 2 * sizeof(R);
            return 7 * nx * ny * nz * sizeof(R) + 5 * spectrum + spectrum;
        };
        constexpr std::uint64_t templateBytes = 8 * 6 * 5 * sizeof(T), outputs = sizeof(float) + 2;
        EXPECT_EQ(peak({true, true}, false), padded(47, 35, 24) + templateBytes);
        EXPECT_EQ(peak({false, false}, false), padded(47, 35, 24) + templateBytes + outputs * 40 * 30 * 20);
        // Of the box: the filter, its product, a real volume, and two plans' own work.
        EXPECT_EQ(peak({true, true}, true) - peak({true, true}, false),
                  8 * 6 * 5 * sizeof(R) + 4 * 5 * 6 * 5 * 2 * sizeof(R));
        constexpr std::uint64_t reduction = 2048;
        EXPECT_LE(peak({false, false, {20, 16, 14}}, false),
                  padded(20, 16, 14) + templateBytes + outputs * 20 * 16 * 14 + reduction);
    };
    peaks.operator()<float, float>();
    peaks.operator()<std::uint8_t, float>();
    peaks.operator()<double, double>();
}
