#include "Fft/RealTransform.h"

#include <algorithm>

#include "Fft/RowPairs.h"
#include "host_runtime/Parallel.h"
#include "host_runtime/Scratch.h"

namespace zel::host {
namespace {

/// Work on each panel of `lines` lines; body(panel memory, first line, number of lines).
template <typename R, typename Body>
void forEachPanel(const ComplexLines<R>& transform, std::size_t lines, std::size_t linesPerPanel, const Body& body) {
    parallelFor((lines + linesPerPanel - 1) / linesPerPanel, 1, [&](std::size_t begin, std::size_t end) {
        auto* const panel = static_cast<std::complex<R>*>(threadScratch(transform.panelBytes()));
        for (std::size_t first = begin * linesPerPanel; first < std::min(lines, end * linesPerPanel);
             first += linesPerPanel) {
            body(panel, first, std::min(linesPerPanel, lines - first));
        }
    });
}

/// Lines of a spectrum along an axis: line l begins at l % width + l / width * groupStep, its elements are `step`
/// apart.
struct LineGrid {
    std::size_t lines, width, groupStep, step;
};

/// Calls body(element of the panel's line, element of the spectrum, count) for each stretch of lines that are
/// neighbours.
template <typename Body>
void forEachStretch(const LineGrid& grid, std::size_t first, std::size_t count, const Body& body) {
    for (std::size_t done = 0; done < count;) {
        const std::size_t line = first + done, x = line % grid.width;
        const std::size_t stretch = std::min(count - done, grid.width - x);
        body(done, x + line / grid.width * grid.groupStep, stretch);
        done += stretch;
    }
}

/// Each line goes to a panel, which stays in the cache, and back.
template <typename R>
void transformLines(const ComplexLines<R>& transform, const LineGrid& grid, std::complex<R>* spectrum) {
    constexpr std::size_t side = panelLines<R>;
    forEachPanel(transform, grid.lines, side, [&](std::complex<R>* panel, std::size_t first, std::size_t count) {
        if (count < side) std::fill_n(panel, transform.length() * side, std::complex<R>());
        forEachStretch(grid, first, count, [&](std::size_t lane, std::size_t start, std::size_t stretch) {
            for (std::size_t p = 0; p < transform.length(); ++p)
                std::copy_n(spectrum + start + p * grid.step, stretch, panel + p * side + lane);
        });
        transform.transform(panel);
        forEachStretch(grid, first, count, [&](std::size_t lane, std::size_t start, std::size_t stretch) {
            for (std::size_t p = 0; p < transform.length(); ++p)
                std::copy_n(panel + p * side + lane, stretch, spectrum + start + p * grid.step);
        });
    });
}

}  // namespace

template <typename R>
RealTransform<R>::RealTransform(const FftShape& shape, FftDirection direction)
    : shape_(shape), rows_(shape.nx, direction), columns_(shape.ny, direction) {
    if (shape.nz > 1) acrossSlices_.emplace_back(shape.nz, direction);
}

template <typename R>
void RealTransform<R>::forward(const R* real, Complex* spectrum) const {
    constexpr std::size_t rowsPerPanel = 2 * panelLines<R>;
    const std::size_t nx = shape_.nx, width = shape_.spectrumWidth();
    forEachPanel(rows_, shape_.rows(), rowsPerPanel, [&](Complex* panel, std::size_t first, std::size_t count) {
        if (!packRowPairs(real + first * nx, nx, count, panel)) {
            std::fill_n(spectrum + first * width, count * width, Complex());
            return;
        }
        rows_.transform(panel);
        splitRowPairs(panel, nx, spectrum + first * width, width, count);
    });
    transformColumns(spectrum);
    transformAcrossSlices(spectrum);
}

template <typename R>
void RealTransform<R>::inverse(Complex* spectrum, R* real) const {
    constexpr std::size_t rowsPerPanel = 2 * panelLines<R>;
    const std::size_t nx = shape_.nx, width = shape_.spectrumWidth();
    transformAcrossSlices(spectrum);
    transformColumns(spectrum);
    forEachPanel(rows_, shape_.rows(), rowsPerPanel, [&](Complex* panel, std::size_t first, std::size_t count) {
        joinRowPairs(spectrum + first * width, width, count, panel, nx);
        rows_.transform(panel);
        unpackRowPairs(panel, nx, real + first * nx, count);
    });
}

template <typename R>
void RealTransform<R>::transformColumns(Complex* spectrum) const {
    if (shape_.ny == 1) return;
    const std::size_t width = shape_.spectrumWidth();
    transformLines(columns_, {width * shape_.nz, width, width * shape_.ny, width}, spectrum);
}

template <typename R>
void RealTransform<R>::transformAcrossSlices(Complex* spectrum) const {
    const std::size_t slice = shape_.spectrumWidth() * shape_.ny;
    for (const ComplexLines<R>& lines : acrossSlices_) transformLines(lines, {slice, slice, 0, slice}, spectrum);
}

template class RealTransform<float>;
template class RealTransform<double>;

}  // namespace zel::host
