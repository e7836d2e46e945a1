#include <gtest/gtest.h>
#include <host_device.h>

#include <array>
#include <bit>
#include <string>

#include "DeviceVectors.h"
#include "Kernels/FindPositionMaxiamalIntensity.h"
#include "Kernels/IntensityStatistics.h"
#include "Kernels/MeanIntensity.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;

namespace {

constexpr std::uint64_t width = 70, height = 3, depth = 2;

template <typename Record>
auto bytesOf(const Record& record) {
    return std::bit_cast<std::array<std::uint8_t, sizeof(Record)>>(record);
}

/// Each call that a reduction makes is refused once; the record is then neutral and nothing is left on the device.
/// @param reduce      of an image of 1 to a record.
/// @param entryBytes  of the memory that a row needs.
/// @param copies      that fill the entries of the rows.
template <typename Record, typename Reduce>
void expectCleanRefusals(const Reduce& reduce, std::uint64_t entryBytes, std::uint64_t copies) {
    const auto device = test::toDevice(std::vector<float>(width * height * depth, 1));
    const Record neutral{};
    const host::DeviceUse before = host::deviceUse();
    host::resetPeakBytes();
    host::resetCallCounts();
    Record expected;
    reduce(device.get(), &expected);
    EXPECT_EQ(host::deviceUse().peakBytes - before.liveBytes, entryBytes + sizeof(unsigned));
    EXPECT_EQ(host::callCount("cudaMemcpyAsync"), copies + 1);
    for (const char* const call :
         {"cudaMalloc", "cudaMemsetAsync", "cudaMemcpyAsync", "cudaLaunchKernelEx", "cudaDeviceSynchronize"}) {
        host::resetCallCounts();
        Record record;
        reduce(device.get(), &record);
        const std::uint64_t count = host::callCount(call);
        EXPECT_GT(count, 0u);
        for (std::uint64_t nth = 1; nth <= count; ++nth) {
            SCOPED_TRACE(testing::Message() << call << ", call " << nth);
            host::injectFault({.call = call, .nth = nth});
            EXPECT_THROW(reduce(device.get(), &record), RuntimeError);
            EXPECT_TRUE(host::faultFired());
            EXPECT_EQ(host::deviceUse().liveBytes, before.liveBytes);
            // The last call comes when the result has been copied.
            if (nth < count || call != std::string("cudaDeviceSynchronize")) {
                EXPECT_EQ(bytesOf(record), bytesOf(neutral));
            }
        }
        host::clearFault();
        reduce(device.get(), &record);
        EXPECT_EQ(bytesOf(record), bytesOf(expected));
    }
}

}  // namespace

TEST(ReductionFaultsTest, RefusedCallsLeaveANeutralRecordAndNoMemory) {
    const std::uint64_t pitch = width * sizeof(float), slicePitch = pitch * height;
    expectCleanRefusals<double>(
        [=](const float* image, double* mean) { meanIntensity(image, pitch, width, height, mean, nullptr); },
        height * sizeof(double), 0);
    expectCleanRefusals<PositionMaximalIntensityInfo>(
        [=](const float* image, PositionMaximalIntensityInfo* info) {
            findPositionMaximalIntensity(image, pitch, width, height, info, nullptr);
        },
        height * sizeof(PositionMaximalIntensityInfo), height);
    expectCleanRefusals<IntensityStatisticsInfo>(
        [=](const float* image, IntensityStatisticsInfo* info) {
            cumulateIntensities<float>(image, pitch, slicePitch, nullptr, 0, 0, width, height, depth, info, nullptr);
        },
        height * depth * sizeof(IntensityStatisticsInfo), height * depth);
}
