#include "Fft/RealTransform.h"

#include <algorithm>

#include "Fft/RowPairs.h"
#include "host_runtime/Parallel.h"
#include "host_runtime/Scratch.h"

namespace zel::host {
namespace {

/// Calls body(panel, first line, number of lines) for each panel of `linesPerPanel` lines.
template <typename R, typename Body>
void forEachPanel(const PanelTransform<R>& transform, std::size_t lines, std::size_t linesPerPanel, const Body& body) {
    parallelFor((lines + linesPerPanel - 1) / linesPerPanel, 1, [&](std::size_t begin, std::size_t end) {
        R* const panel = static_cast<R*>(threadScratch(transform.panelBytes()));
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

/// Calls body(line of the panel, first element in the spectrum, count) for each run of lines that are neighbours.
template <typename Body>
void forEachRun(const LineGrid& grid, std::size_t first, std::size_t count, const Body& body) {
    for (std::size_t done = 0; done < count;) {
        const std::size_t line = first + done, x = line % grid.width;
        const std::size_t run = std::min(count - done, grid.width - x);
        body(done, x + line / grid.width * grid.groupStep, run);
        done += run;
    }
}

template <typename R>
void gather(const std::complex<R>* numbers, R* point) {
    const Parts<R> parts = Parts<R>::load(reinterpret_cast<const R*>(numbers));
    storeLanes(parts.re, point);
    storeLanes(parts.im, point + panelLines<R>);
}
template <typename R>
void gather(const std::complex<R>* numbers, std::size_t count, R* point) {
    for (std::size_t l = 0; l < count; ++l) {
        point[l] = numbers[l].real();
        point[panelLines<R> + l] = numbers[l].imag();
    }
}

template <typename R>
void scatter(const R* point, std::complex<R>* numbers) {
    Parts<R>{loadLanes(point), loadLanes(point + panelLines<R>)}.store(reinterpret_cast<R*>(numbers));
}
template <typename R>
void scatter(const R* point, std::size_t count, std::complex<R>* numbers) {
    for (std::size_t l = 0; l < count; ++l) numbers[l] = {point[l], point[panelLines<R> + l]};
}

/// Each line goes to a panel, which stays in the cache, and back.
template <typename R>
void transformLines(const PanelTransform<R>& transform, const LineGrid& grid, std::complex<R>* spectrum) {
    constexpr std::size_t lines = panelLines<R>, step = panelStep<R>;
    const std::size_t length = transform.length();
    forEachPanel(transform, grid.lines, lines, [&](R* panel, std::size_t first, std::size_t count) {
        if (count < lines) std::fill_n(panel, length * step, R(0));
        forEachRun(grid, first, count, [&](std::size_t lane, std::size_t start, std::size_t run) {
            const std::complex<R>* const from = spectrum + start;
            if (run == lines) {
                for (std::size_t p = 0; p < length; ++p) gather(from + p * grid.step, panel + p * step);
            } else {
                for (std::size_t p = 0; p < length; ++p) gather(from + p * grid.step, run, panel + p * step + lane);
            }
        });
        const TransformedPanel<R> result = transform(panel);
        forEachRun(grid, first, count, [&](std::size_t lane, std::size_t start, std::size_t run) {
            std::complex<R>* const to = spectrum + start;
            if (run == lines) {
                for (std::size_t p = 0; p < length; ++p) scatter(result.point(p), to + p * grid.step);
            } else {
                for (std::size_t p = 0; p < length; ++p) scatter(result.point(p) + lane, run, to + p * grid.step);
            }
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
    const std::size_t nx = shape_.nx, width = shape_.spectrumWidth();
    forEachPanel(rows_, shape_.rows(), rowsPerPanel<R>, [&](R* panel, std::size_t first, std::size_t count) {
        const R* const rows = real + first * nx;
        Complex* const spectra = spectrum + first * width;
        if (isZero(rows, count * nx)) {
            std::fill_n(spectra, count * width, Complex());
            return;
        }
        packRowPairs(rows, nx, count, panel);
        splitRowPairs(rows_(panel), nx, spectra, width, count);
    });
    transformColumns(spectrum);
    transformAcrossSlices(spectrum);
}

template <typename R>
void RealTransform<R>::inverse(Complex* spectrum, R* real) const {
    const std::size_t nx = shape_.nx, width = shape_.spectrumWidth();
    transformAcrossSlices(spectrum);
    transformColumns(spectrum);
    forEachPanel(rows_, shape_.rows(), rowsPerPanel<R>, [&](R* panel, std::size_t first, std::size_t count) {
        joinRowPairs(spectrum + first * width, width, count, panel, nx);
        unpackRowPairs(rows_(panel), nx, real + first * nx, count);
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
    for (const PanelTransform<R>& lines : acrossSlices_) transformLines(lines, {slice, slice, 0, slice}, spectrum);
}

template class RealTransform<float>;
template class RealTransform<double>;

}  // namespace zel::host
