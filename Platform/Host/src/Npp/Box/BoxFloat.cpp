#include "Npp/Box/Box.h"
#include "Npp/Box/WindowSums.h"
#include "Npp/Common/TileSize.h"
#include "Npp/Common/WorkBuffer.h"

namespace zel::host {
namespace {

// Vertical window sums of a tile first, then horizontal ones, in float: few additions lie between a pixel and its mean
// (a dozen for 51 x 51), so the means are good to one or two last places, at half of what doubles cost.

// A panel is columns summed together, a cache line of them: a window's rows of them fit the first-level cache.
constexpr std::ptrdiff_t panelWidth = 16;
constexpr std::ptrdiff_t maxGroupItems = std::ptrdiff_t{1} << 18;

class FloatTiles {
public:
    FloatTiles(const BoxJob<float>& job, std::ptrdiff_t maxRows)
        : job_(job),
          tile_(job.windowX.size, job.windowY.size, job.roi.width, maxRows),
          stride_(tile_.columns + job.windowX.size - 1 + panelWidth),
          panelItems_((tile_.rows + job.windowY.size - 1) * panelWidth),
          groupWidth_(std::clamp<std::ptrdiff_t>(maxGroupItems / panelItems_, 1, stride_ / panelWidth) * panelWidth),
          buffer_(WorkBuffer::bytesFor<float>(groupWidth_ / panelWidth * panelItems_) +
                  WorkBuffer::bytesFor<float>(tile_.rows * panelWidth) +
                  WorkBuffer::bytesFor<float>(tile_.rows * stride_) + WorkBuffer::bytesFor<float>(tile_.columns)),
          panels_(buffer_.take<float>(groupWidth_ / panelWidth * panelItems_)),
          panelSums_(buffer_.take<float>(tile_.rows * panelWidth)),
          sums_(buffer_.take<float>(tile_.rows * stride_)),
          line_(buffer_.take<float>(tile_.columns)) {}

    void filter(std::ptrdiff_t begin, std::ptrdiff_t end) {
        forEachTile(tile_, begin, end, job_.roi.width, [this](auto... edges) { filterTile(edges...); });
    }

private:
    void filterTile(std::ptrdiff_t top, std::ptrdiff_t bottom, std::ptrdiff_t left, std::ptrdiff_t right) {
        const SourceColumns source(job_, job_.windowX, left, right);
        const std::ptrdiff_t rows = bottom - top;
        for (std::ptrdiff_t x = 0; x < source.count; x += groupWidth_) {
            const std::ptrdiff_t columns = std::min(groupWidth_, source.count - x);
            loadPanels(top, rows, source.first + x, columns);
            for (std::ptrdiff_t i = 0; i < columns; i += panelWidth) {
                sumColumns(rows, panels_ + i / panelWidth * panelItems_, sums_ + source.padLeft + x + i);
            }
        }
        addRepeated(job_.windowY.firstTimes, job_.srcRow(0), rows, source);
        addRepeated(job_.windowY.lastTimes, job_.srcRow(job_.size.height - 1), rows, source);
        for (std::ptrdiff_t j = 0; j < rows; ++j) {
            float* const sums = sums_ + j * stride_;
            source.pad(sums);
            finishRow(sums, source.padded(), job_.dstRow(top + j) + left, right - left);
        }
    }

    /// Copies source columns into panels, row by row: walking down the columns of an image whose step is a power of two
    /// would miss every cache. The row below is asked for ahead: the machine reads ahead by itself within a page only.
    void loadPanels(std::ptrdiff_t top, std::ptrdiff_t rows, std::ptrdiff_t first, std::ptrdiff_t columns) const {
        const std::ptrdiff_t sourceTop = job_.offset.y + top - job_.windowY.before;
        for (std::ptrdiff_t j = 0; j < rows + job_.windowY.size - 1; ++j) {
            const float* const row = job_.srcRow(sourceTop + j) + first;
            const float* const below = job_.srcRow(sourceTop + j + 1) + first;
            float* panel = panels_ + j * panelWidth;
            std::ptrdiff_t x = 0;
            for (; x + panelWidth <= columns; x += panelWidth, panel += panelItems_) {
                __builtin_prefetch(below + x);
                std::copy_n(row + x, panelWidth, panel);
            }
            if (x == columns) continue;
            std::fill(std::copy_n(row + x, columns - x, panel), panel + panelWidth, 0.0f);
        }
    }

    void sumColumns(std::ptrdiff_t rows, float* panel, float* sums) const {
        windowSums(panel, panelSums_, static_cast<std::size_t>(rows * panelWidth), panelWidth,
                   static_cast<std::size_t>(job_.windowY.size));
        for (std::ptrdiff_t j = 0; j < rows; ++j)
            std::copy_n(panelSums_ + j * panelWidth, panelWidth, sums + j * stride_);
    }

    void addRepeated(std::uint64_t times, const float* row, std::ptrdiff_t rows, const SourceColumns& source) const {
        if (times == 0) return;
        for (std::ptrdiff_t j = 0; j < rows; ++j) {
            float* const sums = sums_ + j * stride_ + source.padLeft;
            for (std::ptrdiff_t x = 0; x < source.count; ++x) {
                sums[x] += static_cast<double>(times) * row[source.first + x];
            }
        }
    }

    /// Horizontal sums of the padded vertical ones, and their means.
    void finishRow(float* sums, std::ptrdiff_t padded, float* dst, std::ptrdiff_t count) const {
        for (std::ptrdiff_t x = 0; x < count; x += panelWidth) __builtin_prefetch(dst + x, 1);
        const WindowAxis& window = job_.windowX;
        // Nothing is added where nothing repeats: zero times infinity is not zero.
        const double first = window.firstTimes == 0 ? 0.0 : static_cast<double>(window.firstTimes) * sums[0];
        const double last = window.lastTimes == 0 ? 0.0 : static_cast<double>(window.lastTimes) * sums[padded - 1];
        windowSums(sums, line_, static_cast<std::size_t>(count), 1, static_cast<std::size_t>(window.size));
        const double repeated = first + last;
        const double reciprocal = 1.0 / static_cast<double>(job_.area);
#pragma omp simd
        for (std::ptrdiff_t x = 0; x < count; ++x) dst[x] = static_cast<float>((line_[x] + repeated) * reciprocal);
    }

    const BoxJob<float>& job_;
    TileSize tile_;
    std::ptrdiff_t stride_;
    std::ptrdiff_t panelItems_;
    std::ptrdiff_t groupWidth_;  // columns whose panels are loaded together
    WorkBuffer buffer_;
    float* panels_;
    float* panelSums_;
    float* sums_;
    float* line_;
};

}  // namespace

void filterBoxRows(const BoxJob<Npp32f>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    FloatTiles(job, end - begin).filter(begin, end);
}

}  // namespace zel::host
