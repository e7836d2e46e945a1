#pragma once

#include <nppdefs.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "Npp/Median/MinMaxGraph.h"

namespace zel::host {

/// The medians of a tile of neighbouring pixels as a graph of minima and maxima. The windows of the tile have a core in
/// common, which is sorted once; the tile is then halved again and again, what the windows of a half share on top of
/// that is merged into the core, and values that can no longer be a median are dropped on the way (Adams, Fast median
/// filters using separable sorting networks, 2021; hierarchical tiling, arXiv 2507.19926).
struct MedianGraph {
    /// Of `mask` pixels, odd on both sides.
    constexpr MedianGraph(NppiSize maskSize, NppiSize tileSize);

    /// The tile that needs few minima and maxima a pixel, at most so many pixels wide.
    static NppiSize tileFor(NppiSize mask, int maxWidth);

    // The inputs are numbered from row to row: first the pixels that the tile's windows reach, then the values of their
    // columns in the core's rows in ascending order, which neighbouring tiles share.
    constexpr int columns() const { return mask.width + tile.width - 1; }
    constexpr int rows() const { return mask.height + tile.height - 1; }
    /// The core starts at column tile.width - 1 and row tile.height - 1.
    constexpr int coreRows() const { return mask.height - tile.height + 1; }

    NppiSize mask;
    NppiSize tile;
    MinMaxGraph graph;
    MinMaxGraph::Values medians;  ///< from row to row of the tile
};

namespace detail {

/// Positions [begin, end) along an axis.
struct Span {
    int begin;
    int end;

    constexpr int size() const { return end - begin; }
    /// Of pixels at these positions: what all their windows cover, and what any of them covers.
    constexpr Span core(int window) const { return {end - 1, begin + window}; }
    constexpr Span reach(int window) const { return {begin, end - 1 + window}; }
    constexpr bool contains(int position) const { return begin <= position && position < end; }
};

/// Values of a column or row in ascending order.
struct Line {
    int position;
    MinMaxGraph::Values values;
};

/// A part of the tile and what is known of its windows.
struct Part {
    Span x, y;
    MinMaxGraph::Values core;         ///< in ascending order, from rank `dropped` on
    std::ptrdiff_t dropped;           ///< lowest values that are none of its medians
    std::vector<Line> columns, rows;  ///< beside the core, as far as it reaches
};

class Builder {
    using Values = MinMaxGraph::Values;

public:
    constexpr explicit Builder(MedianGraph& result) : result_(result), graph_(result.graph), mask_(result.mask) {}

    constexpr void build() {
        for (std::int32_t i = 0; i < result_.columns() * result_.rows(); ++i) pixels_.push_back(graph_.input(i));
        result_.medians.assign(index(0, result_.tile.height, result_.tile.width), 0);
        split(wholeTile());
    }

private:
    constexpr Part wholeTile() {
        Part tile{{0, result_.tile.width}, {0, result_.tile.height}, {}, 0, {}, {}};
        const Span coreX = tile.x.core(mask_.width), coreY = tile.y.core(mask_.height);
        const int inputs = result_.columns() * result_.rows();
        std::vector<Values> coreColumns;
        for (int column = 0; column < result_.columns(); ++column) {
            Values values;
            for (int j = 0; j < coreY.size(); ++j)
                values.push_back(graph_.input(inputs + j * result_.columns() + column));
            if (coreX.contains(column)) {
                coreColumns.push_back(std::move(values));
            } else {
                tile.columns.push_back({column, std::move(values)});
            }
        }
        for (int row = 0; row < result_.rows(); ++row) {
            if (coreY.contains(row)) continue;
            Values values;
            for (int column = coreX.begin; column < coreX.end; ++column) values.push_back(pixel(column, row));
            tile.rows.push_back({row, graph_.sorted(values)});
        }
        setCore(tile, graph_.merged(std::move(coreColumns)), 0);
        return tile;
    }

    /// The core's values from rank `dropped` on, without those whose rank cannot become the median's.
    constexpr void setCore(Part& part, const Values& values, std::ptrdiff_t dropped) const {
        const std::ptrdiff_t all = std::ptrdiff_t{mask_.width} * mask_.height;
        const std::ptrdiff_t known = std::ptrdiff_t{part.x.core(mask_.width).size()} * part.y.core(mask_.height).size();
        const std::ptrdiff_t first = std::max(all / 2 - (all - known), dropped) - dropped;
        const std::ptrdiff_t last =
            std::min<std::ptrdiff_t>(all / 2 - dropped, static_cast<std::ptrdiff_t>(values.size()) - 1);
        part.core.assign(values.begin() + first, values.begin() + last + 1);
        part.dropped = dropped + first;
    }

    constexpr void split(const Part& part) {
        const int width = part.x.size(), height = part.y.size();
        if (width == 1 && height == 1) {
            result_.medians[index(part.x.begin, part.y.begin, result_.tile.width)] = part.core[0];
        } else if (width >= height) {
            const int middle = part.x.begin + width / 2;
            split(half(part, &Part::x, {part.x.begin, middle}));
            split(half(part, &Part::x, {middle, part.x.end}));
        } else {
            const int middle = part.y.begin + height / 2;
            split(half(part, &Part::y, {part.y.begin, middle}));
            split(half(part, &Part::y, {middle, part.y.end}));
        }
    }

    /// @param axis  along which the part becomes `span`.
    constexpr Part half(const Part& whole, Span Part::*axis, Span span) {
        const bool alongX = axis == &Part::x;
        const int window = alongX ? mask_.width : mask_.height;
        const auto along = alongX ? &Part::columns : &Part::rows;
        const auto across = alongX ? &Part::rows : &Part::columns;
        Part part{whole.x, whole.y, {}, whole.dropped, {}, {}};
        part.*axis = span;
        // The columns (or rows) that join the core, in whole; of the crossing rows (or columns) the core's part grows.
        std::vector<int> joining;
        std::vector<Values> joiningValues;
        for (const auto& [position, values] : whole.*along) {
            if (span.core(window).contains(position)) {
                joining.push_back(position);
                joiningValues.push_back(values);
            } else if (span.reach(window).contains(position)) {
                (part.*along).push_back({position, values});
            }
        }
        for (const auto& [crossing, values] : whole.*across) {
            Values pixels;
            for (const int position : joining)
                pixels.push_back(alongX ? pixel(position, crossing) : pixel(crossing, position));
            (part.*across).push_back({crossing, graph_.merged(values, graph_.sorted(pixels))});
        }
        const Values joined = graph_.merged(std::move(joiningValues));
        if (part.x.size() == 1 && part.y.size() == 1) {
            const std::ptrdiff_t rank = std::ptrdiff_t{mask_.width} * mask_.height / 2 - whole.dropped;
            part.core = {graph_.ofRank(whole.core, joined, static_cast<std::size_t>(rank))};
        } else {
            setCore(part, graph_.merged(whole.core, joined), whole.dropped);
        }
        return part;
    }

    static constexpr std::size_t index(int column, int row, int columns) {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(column);
    }
    constexpr MinMaxGraph::Value pixel(int column, int row) const {
        return pixels_[index(column, row, result_.columns())];
    }

    MedianGraph& result_;
    MinMaxGraph& graph_;
    NppiSize mask_;
    Values pixels_;
};

}  // namespace detail

constexpr MedianGraph::MedianGraph(NppiSize maskSize, NppiSize tileSize) : mask(maskSize), tile(tileSize) {
    detail::Builder(*this).build();
}

}  // namespace zel::host
