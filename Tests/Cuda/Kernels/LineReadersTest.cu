#include <gtest/gtest.h>

#include <vector>

#include "DeviceVectors.h"
#include "Kernels/MirrorIndex.h"
#include "Kernels/ReadColumn.h"
#include "Kernels/ReadRow.h"
#include "Kernels/ReadZLine.h"
#include "TestImages.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

enum class Axis { x, y, z };
enum class Form { sequential, computing, table };

using Offset = unsigned long long;

/// Which line: its axis, its length in pixels, and the two other coordinates in the order that readers take them.
struct Line {
    Axis axis;
    int length;
    Offset a, b;
};

/// One thread does the work of `stride` lanes, one after the other.
template <typename T>
__global__ void readLineKernel(Form form, Line which, const T* image, Offset pitch, Offset slicePitch,
                               LaneShared<T>* line, LaneShared<Offset>* offsets, int begin, int count, int stride) {
    const auto [axis, length, a, b] = which;
    for (int lane = 0; lane < stride; ++lane) {
        const auto withReaders = [=](auto sequential, auto parallel) {
            if (form == Form::sequential) sequential(image, pitch, slicePitch, length, line, begin, count, a, b);
            if (form == Form::computing)
                parallel(image, pitch, slicePitch, length, line, begin, count, a, b, lane, stride);
            if (form == Form::table)
                parallel(image, pitch, slicePitch, length, line, offsets, count, a, b, lane, stride);
        };
        if (axis == Axis::x)
            withReaders([](auto... p) { readRowMirror<T>(p...); }, [](auto... p) { readRowMirrorParallel<T>(p...); });
        else if (axis == Axis::y)
            withReaders([](auto... p) { readColumnMirror<T>(p...); },
                        [](auto... p) { readColumnMirrorParallel<T>(p...); });
        else
            withReaders([](auto... p) { readZLineMirror<T>(p...); },
                        [](auto... p) { readZLineMirrorParallel<T>(p...); });
    }
}

/// 5 x 4 x 3 pixels, each of which has a value of its own; rows are padded to 8, slices to 5 rows.
constexpr int width = 5, height = 4, depth = 3, rowLength = 8, rowsPerSlice = 5, untouched = 99;

template <typename T>
std::vector<T> testImage() {
    std::vector<T> image(rowLength * rowsPerSlice * depth);
    for (std::size_t i = 0; i < image.size(); ++i) image[i] = static_cast<T>(i);
    return image;
}

/// Positions begin ... of a line by the bouncing walk: 0 1 ... n - 1 n - 1 ... 1 0 0 1 ...
std::vector<int> mirrored(int length, int begin, int count) {
    std::vector<int> period;
    for (int i = 0; i < length; ++i) period.push_back(i);
    for (int i = length; i-- > 0;) period.push_back(i);
    const int periods = 100;  // enough to make every position positive
    std::vector<int> pixels;
    for (int i = begin; i < begin + count; ++i) pixels.push_back(period[(i + periods * 2 * length) % (2 * length)]);
    return pixels;
}

template <typename T>
class LineReadersTest : public ::testing::Test {
protected:
    /// Some positions more than `count`, to show which ones are left alone.
    std::vector<T> read(Form form, const Line& which, int begin, int count, int stride) const {
        const Offset step = which.axis == Axis::x ? 1 : which.axis == Axis::y ? pitch_ : slicePitch_;
        std::vector<Offset> offsets;
        for (const int pixel : mirrored(which.length, begin, count)) offsets.push_back(pixel * step);
        std::vector<T> line(count + 3, T(untouched));
        const auto deviceLine = toDevice(line), deviceOffsets = toDevice(offsets);
        cudaLaunchConfig_t config{};
        config.gridDim = config.blockDim = dim3(1);
        cudaLaunchKernelEx(&config, readLineKernel<T>, form, which, static_cast<const T*>(image_.get()), pitch_,
                           slicePitch_, static_cast<T*>(deviceLine.get()), static_cast<Offset*>(deviceOffsets.get()),
                           begin, count, stride);
        return toHost<T>(deviceLine, line.size());
    }

    static std::vector<T> expected(const Line& which, int begin, int count) {
        const auto [axis, length, a, b] = which;
        std::vector<T> line;
        for (const int m : mirrored(length, begin, count)) {
            const Offset x = axis == Axis::x ? m : a;
            const Offset y = axis == Axis::x ? a : axis == Axis::y ? m : b;
            const Offset z = axis == Axis::z ? m : b;
            line.push_back(static_cast<T>(x + rowLength * (y + rowsPerSlice * z)));
        }
        line.resize(count + 3, T(untouched));
        return line;
    }

private:
    const Offset pitch_ = rowLength * sizeof(T), slicePitch_ = rowsPerSlice * pitch_;
    const std::shared_ptr<void> image_ = toDevice(testImage<T>());
};

using PixelTypes = decltype(testedTypes(zel::KernelTypes{}));
TYPED_TEST_SUITE(LineReadersTest, PixelTypes);

}  // namespace

TEST(MirrorIndexTest, RepeatsTheEdgePixelAndReflectsAsOftenAsNeeded) {
    const auto indices = [](int begin, int count, int length) {
        std::vector<int> result;
        for (int i = begin; i < begin + count; ++i) result.push_back(mirrorIndex(i, length));
        return result;
    };
    EXPECT_EQ(indices(-3, 10, 4), (std::vector{2, 1, 0, 0, 1, 2, 3, 3, 2, 1}));
    EXPECT_EQ(indices(-5, 12, 2), (std::vector{0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1}));
    EXPECT_EQ(indices(-4, 9, 1), std::vector<int>(9, 0));
    constexpr int longest = 2147483647;
    EXPECT_EQ(mirrorIndex(-longest - 1, longest), longest - 1);
    EXPECT_EQ(mirrorIndex(longest, longest - 1), longest - 3);
    EXPECT_EQ(mirrorIndex(-2000000001, 3), 2) << "2000000000 is 2 more than a multiple of 6";
}

// Long enough for runs of the table that are copied whole, and for lines that are mirrored several times.
TYPED_TEST(LineReadersTest, AllFormsAgreeForEveryStride) {
    const Line lines[]{{Axis::x, width, 2, 1},  {Axis::x, 1, 3, 0}, {Axis::x, 120, 0, 0},
                       {Axis::y, height, 4, 2}, {Axis::y, 2, 1, 0}, {Axis::z, depth, 3, 2}};
    for (const Line& which : lines) {
        const int length = which.length;
        const std::pair<int, int> stretches[]{{0, length}, {-3, length + 7}, {-20, 37}, {2, 1}, {0, 0}};
        for (const auto& [begin, count] : stretches) {
            SCOPED_TRACE(::testing::Message() << "axis " << static_cast<int>(which.axis) << ", length " << length
                                              << ", begin " << begin << ", count " << count);
            const auto expected = this->expected(which, begin, count);
            EXPECT_EQ(this->read(Form::sequential, which, begin, count, 1), expected);
            for (const int stride : {1, 3, 50}) {
                EXPECT_EQ(this->read(Form::computing, which, begin, count, stride), expected) << "stride " << stride;
                EXPECT_EQ(this->read(Form::table, which, begin, count, stride), expected) << "stride " << stride;
            }
        }
    }
}
