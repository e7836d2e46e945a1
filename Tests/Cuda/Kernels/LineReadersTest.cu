#include "Kernels/MirrorIndex.h"
#include "Kernels/ReadColumn.h"
#include "Kernels/ReadRow.h"
#include "Kernels/ReadZLine.h"
#include "PaddedVolume.h"
#include "TestImages.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

enum class Form { sequential, computing, table };

using Offset = unsigned long long;

/// Which line: its axis, its length in pixels, and the two other coordinates in the order that readers take them.
struct Line {
    char axis;
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
        if (axis == 'x')
            withReaders([](auto... p) { readRowMirror<T>(p...); }, [](auto... p) { readRowMirrorParallel<T>(p...); });
        if (axis == 'y')
            withReaders([](auto... p) { readColumnMirror<T>(p...); },
                        [](auto... p) { readColumnMirrorParallel<T>(p...); });
        if (axis == 'z')
            withReaders([](auto... p) { readZLineMirror<T>(p...); },
                        [](auto... p) { readZLineMirrorParallel<T>(p...); });
    }
}

template <typename T>
class LineReadersTest : public ::testing::Test {
protected:
    static constexpr T untouched = 99;

    /// Some positions more than `count`, to show which ones are left alone.
    std::vector<T> read(Form form, const Line& which, int begin, int count, int stride) const {
        const Offset step = which.axis == 'x' ? 1 : which.axis == 'y' ? image_.pitch() : image_.slicePitch();
        std::vector<Offset> table;
        for (int i = 0; i < count; ++i) table.push_back(mirrored(begin + i, which.length) * step);
        const auto image = toDevice(image_.elements), line = toDevice(std::vector<T>(count + 3, untouched));
        const auto offsets = toDevice(table);
        cudaLaunchConfig_t config{};
        config.gridDim = config.blockDim = dim3(1);
        cudaLaunchKernelEx(&config, readLineKernel<T>, form, which, image.get(), image_.pitch(), image_.slicePitch(),
                           line.get(), offsets.get(), begin, count, stride);
        return toHost(line, count + 3);
    }

    std::vector<T> expected(const Line& which, int begin, int count) const {
        const auto [axis, length, a, b] = which;
        std::vector<T> line(count + 3, untouched);
        for (int i = 0; i < count; ++i) {
            const std::size_t m = mirrored(begin + i, length);
            line[i] = image_.elements[axis == 'x'   ? image_.indexOf(m, a, b)
                                      : axis == 'y' ? image_.indexOf(a, m, b)
                                                    : image_.indexOf(a, b, m)];
        }
        return line;
    }

private:
    const PaddedVolume<T> image_ = PaddedVolume<T>::numbered({5, 4, 3}, 3);
};

TYPED_TEST_SUITE(LineReadersTest, decltype(testedTypes(zel::KernelTypes{})));

}  // namespace

TEST(MirrorIndexTest, RepeatsTheEdgePixelAndReflectsAsOftenAsNeeded) {
    const int expected[] = {2, 1, 0, 0, 1, 2, 3, 3, 2, 1, 0, 0};
    for (int i = 0; i < 12; ++i) EXPECT_EQ(mirrorIndex(i - 3, 4), expected[i]) << i;
    constexpr int maxLength = 2147483647;
    EXPECT_EQ(mirrorIndex(-maxLength - 1, maxLength), maxLength - 1);
    EXPECT_EQ(mirrorIndex(maxLength, maxLength - 1), maxLength - 3);
    EXPECT_EQ(mirrorIndex(-2000000001, 3), 2) << "2000000000 is 2 more than a multiple of 6";
}

// Long enough for runs of the table that are copied whole, and for lines that are mirrored several times.
TYPED_TEST(LineReadersTest, AllFormsAgreeForEveryStride) {
    for (const Line& which :
         {Line{'x', 5, 2, 1}, {'x', 1, 3, 0}, {'x', 120, 0, 0}, {'y', 4, 4, 2}, {'y', 2, 1, 0}, {'z', 3, 3, 2}}) {
        const int length = which.length;
        const std::pair<int, int> stretches[]{{0, length}, {-3, length + 7}, {-20, 37}, {2, 1}, {0, 0}};
        for (const auto& [begin, count] : stretches) {
            SCOPED_TRACE(::testing::Message() << "axis " << which.axis << ", length " << length << ", begin " << begin
                                              << ", count " << count);
            const auto expected = this->expected(which, begin, count);
            EXPECT_EQ(this->read(Form::sequential, which, begin, count, 1), expected);
            for (const int stride : {1, 3, 50}) {
                EXPECT_EQ(this->read(Form::computing, which, begin, count, stride), expected) << "stride " << stride;
                EXPECT_EQ(this->read(Form::table, which, begin, count, stride), expected) << "stride " << stride;
            }
        }
    }
}
