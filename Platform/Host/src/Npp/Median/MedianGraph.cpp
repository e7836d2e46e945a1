#include "Npp/Median/MedianGraph.h"

#include <algorithm>
#include <bit>
#include <map>

namespace zel::host {
namespace {

using Values = MinMaxGraph::Values;

/// Positions [begin, end) along an axis.
struct Span {
    int begin;
    int end;

    int size() const { return end - begin; }
    /// Of pixels at these positions: what all their windows cover, and what any of them covers.
    Span core(int window) const { return {end - 1, begin + window}; }
    Span reach(int window) const { return {begin, end - 1 + window}; }
    bool contains(int position) const { return begin <= position && position < end; }
};

/// A part of the tile and what is known of its windows.
struct Part {
    Span x, y;
    Values core;                          ///< in ascending order, from rank `dropped` on
    std::ptrdiff_t dropped;               ///< lowest values that are none of its medians
    std::map<int, Values> columns, rows;  ///< beside the core, as far as it reaches: values in ascending order
};

class Builder {
public:
    explicit Builder(MedianGraph& result) : result_(result), graph_(result.graph), mask_(result.mask) {}

    void build() {
        for (std::int32_t i = 0; i < result_.columns() * result_.rows(); ++i) pixels_.push_back(graph_.input(i));
        result_.medians.resize(static_cast<std::size_t>(result_.tile.width * result_.tile.height));
        split(wholeTile());
    }

private:
    Part wholeTile() {
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
                tile.columns[column] = std::move(values);
            }
        }
        for (int row = 0; row < result_.rows(); ++row) {
            if (coreY.contains(row)) continue;
            Values values;
            for (int column = coreX.begin; column < coreX.end; ++column) values.push_back(pixel(column, row));
            tile.rows[row] = graph_.sorted(values);
        }
        setCore(tile, graph_.merged(std::move(coreColumns)), 0);
        return tile;
    }

    /// The core's values from rank `dropped` on, without those whose rank cannot become the median's.
    void setCore(Part& part, const Values& values, std::ptrdiff_t dropped) const {
        const std::ptrdiff_t all = std::ptrdiff_t{mask_.width} * mask_.height;
        const std::ptrdiff_t known = std::ptrdiff_t{part.x.core(mask_.width).size()} * part.y.core(mask_.height).size();
        const std::ptrdiff_t first = std::max(all / 2 - (all - known), dropped) - dropped;
        const std::ptrdiff_t last =
            std::min<std::ptrdiff_t>(all / 2 - dropped, static_cast<std::ptrdiff_t>(values.size()) - 1);
        part.core.assign(values.begin() + first, values.begin() + last + 1);
        part.dropped = dropped + first;
    }

    void split(const Part& part) {
        const int width = part.x.size(), height = part.y.size();
        if (width == 1 && height == 1) {
            result_.medians[static_cast<std::size_t>(part.y.begin * result_.tile.width + part.x.begin)] = part.core[0];
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
    Part half(const Part& whole, Span Part::*axis, Span span) {
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
                (part.*along)[position] = values;
            }
        }
        for (const auto& [crossing, values] : whole.*across) {
            Values pixels;
            for (const int position : joining)
                pixels.push_back(alongX ? pixel(position, crossing) : pixel(crossing, position));
            (part.*across)[crossing] = graph_.merged(values, graph_.sorted(pixels));
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

    MinMaxGraph::Value pixel(int column, int row) const {
        return pixels_[static_cast<std::size_t>(row * result_.columns() + column)];
    }

    MedianGraph& result_;
    MinMaxGraph& graph_;
    NppiSize mask_;
    Values pixels_;
};

int powerOfTwoUpTo(int limit) {
    return static_cast<int>(std::bit_floor(static_cast<unsigned>(limit)));
}

}  // namespace

MedianGraph::MedianGraph(NppiSize maskSize, NppiSize tileSize) : mask(maskSize), tile(tileSize) {
    Builder(*this).build();
}

NppiSize MedianGraph::tileFor(NppiSize mask, int maxWidth) {
    constexpr int maxSide = 16;
    const int width = powerOfTwoUpTo(std::min({(mask.width + 1) / 2, maxWidth, maxSide}));
    const int height = mask.height == 1 ? 1 : powerOfTwoUpTo(std::clamp(mask.height / 2, 2, maxSide));
    return {width, height};
}

}  // namespace zel::host
