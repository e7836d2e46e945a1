#include "Npp/Box/Box.h"
#include "Npp/Box/WindowSums.h"
#include "Npp/Common/Scratch.h"
#include "Npp/Common/TileSize.h"

namespace zel::host {
namespace {

// Vertical window sums of a tile first, then horizontal ones, in float: few additions lie between a pixel and its mean
// (a dozen for 51 x 51), so the means are good to one or two last places, at half of what doubles cost.

// Columns summed together, a cache line of them: a window's rows of them fit the first-level cache.
constexpr std::ptrdiff_t blockWidth = 16;
constexpr std::ptrdiff_t groupItems = std::ptrdiff_t{1} << 18;

class FloatTiles {
public:
    FloatTiles(const BoxJob<float>& job, std::ptrdiff_t rowsLeft)
        : job_(job),
          tile_(job.windowX.size, job.windowY.size, job.roi.width, rowsLeft),
          stride_(tile_.columns + job.windowX.size - 1 + blockWidth),
          blockItems_((tile_.rows + job.windowY.size - 1) * blockWidth),
          groupWidth_(std::clamp<std::ptrdiff_t>(groupItems / blockItems_, 1, stride_ / blockWidth) * blockWidth),
          scratch_(Scratch::bytesFor<float>(groupWidth_ / blockWidth * blockItems_) +
                   Scratch::bytesFor<float>(tile_.rows * blockWidth) + Scratch::bytesFor<float>(tile_.rows * stride_) +
                   Scratch::bytesFor<float>(tile_.columns)),
          blocks_(scratch_.take<float>(groupWidth_ / blockWidth * blockItems_)),
          blockSums_(scratch_.take<float>(tile_.rows * blockWidth)),
          sums_(scratch_.take<float>(tile_.rows * stride_)),
          line_(scratch_.take<float>(tile_.columns)) {}

    void filter(std::ptrdiff_t begin, std::ptrdiff_t end) {
        forEachTile(tile_, begin, end, job_.roi.width, [this](auto... edges) { filterTile(edges...); });
    }

private:
    void filterTile(std::ptrdiff_t top, std::ptrdiff_t bottom, std::ptrdiff_t left, std::ptrdiff_t right) {
        const SourceColumns source(job_, job_.windowX, left, right);
        const std::ptrdiff_t rows = bottom - top;
        for (std::ptrdiff_t x = 0; x < source.count; x += groupWidth_) {
            const std::ptrdiff_t columns = std::min(groupWidth_, source.count - x);
            loadBlocks(top, rows, source.first + x, columns);
            for (std::ptrdiff_t i = 0; i < columns; i += blockWidth) {
                sumColumns(rows, blocks_ + i / blockWidth * blockItems_, sums_ + source.padLeft + x + i);
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

    /// Copies source columns into blocks, row by row: walking down the columns of an image whose step is a power of two
    /// would miss every cache. The row below is asked for ahead: the machine reads ahead by itself within a page only.
    void loadBlocks(std::ptrdiff_t top, std::ptrdiff_t rows, std::ptrdiff_t first, std::ptrdiff_t columns) const {
        const std::ptrdiff_t sourceTop = job_.offset.y + top - job_.windowY.before;
        for (std::ptrdiff_t j = 0; j < rows + job_.windowY.size - 1; ++j) {
            const float* const row = job_.srcRow(sourceTop + j) + first;
            const float* const below = job_.srcRow(sourceTop + j + 1) + first;
            float* block = blocks_ + j * blockWidth;
            std::ptrdiff_t x = 0;
            for (; x + blockWidth <= columns; x += blockWidth, block += blockItems_) {
                __builtin_prefetch(below + x);
                std::copy_n(row + x, blockWidth, block);
            }
            if (x == columns) continue;
            std::fill(std::copy_n(row + x, columns - x, block), block + blockWidth, 0.0f);
        }
    }

    void sumColumns(std::ptrdiff_t rows, float* block, float* sums) const {
        windowSums(block, blockSums_, static_cast<std::size_t>(rows * blockWidth), blockWidth,
                   static_cast<std::size_t>(job_.windowY.size));
        for (std::ptrdiff_t j = 0; j < rows; ++j)
            std::copy_n(blockSums_ + j * blockWidth, blockWidth, sums + j * stride_);
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
        for (std::ptrdiff_t x = 0; x < count; x += blockWidth) __builtin_prefetch(dst + x, 1);
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
    std::ptrdiff_t blockItems_;
    std::ptrdiff_t groupWidth_;  // columns whose blocks are loaded together
    Scratch scratch_;
    float* blocks_;
    float* blockSums_;
    float* sums_;
    float* line_;
};

}  // namespace

void filterBoxRows(const BoxJob<Npp32f>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    FloatTiles(job, end - begin).filter(begin, end);
}

}  // namespace zel::host
