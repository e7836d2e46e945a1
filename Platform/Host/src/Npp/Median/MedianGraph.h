#pragma once

#include <nppdefs.h>

#include <vector>

#include "Npp/Median/MinMaxGraph.h"

namespace zel::host {

/// The medians of a tile of neighbouring pixels as a graph of minima and maxima. The windows of the tile have a core in
/// common, which is sorted once; the tile is then halved again and again, what the windows of a half share on top of
/// that is merged into the core, and values that can no longer be a median are dropped on the way (Adams, Fast median
/// filters using separable sorting networks, 2021; hierarchical tiling, arXiv 2507.19926).
struct MedianGraph {
    /// Of `mask` pixels, odd on both sides.
    MedianGraph(NppiSize mask, NppiSize tile);

    /// The tile that needs few minima and maxima a pixel, at most so many pixels wide.
    static NppiSize tileFor(NppiSize mask, int maxWidth);

    // The inputs are numbered from row to row: first the pixels that the tile's windows reach, then the values of their
    // columns in the core's rows in ascending order, which neighbouring tiles share.
    int columns() const { return mask.width + tile.width - 1; }
    int rows() const { return mask.height + tile.height - 1; }
    /// The core starts at column tile.width - 1 and row tile.height - 1.
    int coreRows() const { return mask.height - tile.height + 1; }

    NppiSize mask;
    NppiSize tile;
    MinMaxGraph graph;
    MinMaxGraph::Values medians;  ///< from row to row of the tile
};

}  // namespace zel::host
