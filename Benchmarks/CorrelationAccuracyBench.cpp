// How far the scores of the cross-correlation are from sums in double.

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "Comparison.h"
#include "CrossCorrelationRun.h"

namespace zel::bench {

namespace {

struct Plane {
    long width, height;
    std::vector<double> pixels;

    double& at(long x, long y) { return pixels[static_cast<std::size_t>(y * width + x)]; }
    double at(long x, long y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
};

template <typename T>
Plane planeOf(const HostImage& image) {
    const std::vector<T> voxels = test::readAll<T>(image);
    return {static_cast<long>(image.getDimension(0)),
            static_cast<long>(image.getDimension(1)),
            {voxels.begin(), voxels.end()}};
}

long mirrored(long i, long n) {
    return i < 0 ? -1 - i : i >= n ? 2 * n - 1 - i : i;
}

/// Each pixel less the mean of the window of width by height that begins half its size before it.
Plane withoutLocalMeans(const Plane& image, long width, long height) {
    Plane rows = image, result = image;
    tbb::parallel_for(0L, image.height, [&](long y) {
        for (long x = 0; x < image.width; ++x) {
            double sum = 0;
            for (long i = 0; i < width; ++i) sum += image.at(mirrored(x - width / 2 + i, image.width), y);
            rows.at(x, y) = sum;
        }
    });
    tbb::parallel_for(0L, image.height, [&](long y) {
        for (long x = 0; x < image.width; ++x) {
            double sum = 0;
            for (long j = 0; j < height; ++j) sum += rows.at(x, mirrored(y - height / 2 + j, image.height));
            result.at(x, y) -= sum / static_cast<double>(width * height);
        }
    });
    return result;
}

Plane correlated(const Plane& image, const Plane& pattern) {
    Plane result{image.width, image.height, std::vector<double>(image.pixels.size())};
    const long left = (pattern.width - 1) / 2, top = (pattern.height - 1) / 2;
    tbb::parallel_for(0L, image.height, [&](long y) {
        for (long j = std::max(0L, top - y); j < std::min(pattern.height, image.height - y + top); ++j) {
            for (long i = 0; i < pattern.width; ++i) {
                const double factor = pattern.at(i, j);
                const long first = std::max(0L, left - i), last = std::min(image.width, image.width - i + left);
                for (long x = first; x < last; ++x) result.at(x, y) += image.at(x - left + i, y - top + j) * factor;
            }
        }
    });
    return result;
}

/// The largest error of a score, as a part of the scores' range.
template <typename T>
double largestError(HostImage& image, const HostImage& pattern, bool removesMeans) {
    Plane exactImage = planeOf<T>(image), exactPattern = planeOf<T>(pattern);
    if (removesMeans) {
        exactImage = withoutLocalMeans(exactImage, exactPattern.width, exactPattern.height);
        double sum = 0;
        for (const double pixel : exactPattern.pixels) sum += pixel;
        for (double& pixel : exactPattern.pixels) pixel -= sum / static_cast<double>(exactPattern.pixels.size());
    }
    const Plane exact = correlated(exactImage, exactPattern);
    const auto [least, most] = std::minmax_element(exact.pixels.begin(), exact.pixels.end());
    test::CrossCorrelationRun run(image, pattern, removesMeans ? 1 : 0, {});
    const std::vector<float> scores = test::resultOf<float>(run);
    const double low = *run.measurement.minimumCorrelation.data(), high = *run.measurement.maximumCorrelation.data();
    double largest = 0;
    for (std::size_t i = 0; i < scores.size(); ++i) {
        const double score = low + (scores[i] + 1.0) / 2 * (high - low);
        largest = std::max(largest, std::abs(score - exact.pixels[i]));
    }
    return std::max({largest, std::abs(low - *least), std::abs(high - *most)}) / (*most - *least);
}

template <typename T>
void addCase(Comparisons& comparisons, const std::string& type, double offset) {
    comparisons.add("accuracy correlation " + type, [=] {
        Comparison result{};
        result.remark = [=] {
            std::string text;
            for (const std::size_t side : {2, 15, 65, 129}) {
                HostImage image = test::randomImage<T>({512, 512}, 1);
                for (std::size_t i = 0; i < std::size_t{512} * 512; ++i)
                    test::voxels<T>(image)[i] += static_cast<T>(offset);
                HostImage pattern(image.getDataType(), {side, side});
                test::copyRows(test::partOf(image, {170, 128}, {side, side}), pattern);
                char line[128];
                std::snprintf(line, sizeof line, "%saccuracy %s, 512, template %zu: plain %.1e, means off %.1e",
                              text.empty() ? "" : "\n", type.c_str(), side, largestError<T>(image, pattern, false),
                              largestError<T>(image, pattern, true));
                text += line;
            }
            return text;
        };
        return result;
    });
}

}  // namespace

void addCorrelationAccuracyCases(Comparisons& comparisons) {
    addCase<std::uint8_t>(comparisons, "u8", 0);
    addCase<float>(comparisons, "float", 0);
    addCase<float>(comparisons, "float + 10000", 10000);
    addCase<double>(comparisons, "double", 0);
}

}  // namespace zel::bench
