#include "Npp/Median/MedianNetwork.h"

#include <algorithm>
#include <list>
#include <mutex>

#include "Npp/Median/MedianGraph.h"

namespace zel::host {
namespace {

using Address = MinMaxProgram::Address;

struct Known {
    NppiSize mask;
    NppiSize tile;
    std::size_t keyBytes;
    std::shared_ptr<const MedianNetwork> network;
};

bool isEqual(NppiSize a, NppiSize b) {
    return a.width == b.width && a.height == b.height;
}

}  // namespace

std::shared_ptr<const MedianNetwork> MedianNetwork::of(NppiSize mask, std::ptrdiff_t width, std::size_t keyBytes) {
    constexpr std::size_t kept = 8;
    static std::mutex mutex;
    static std::list<Known> latest;
    const auto lanes = MinMaxProgram::laneBytes / static_cast<std::ptrdiff_t>(keyBytes);
    const NppiSize tile =
        MedianGraph::tileFor(mask, static_cast<int>(std::clamp<std::ptrdiff_t>(width / lanes, 2, mask.width)));
    const std::scoped_lock lock(mutex);
    const auto known = std::find_if(latest.begin(), latest.end(), [&](const Known& other) {
        return isEqual(other.mask, mask) && isEqual(other.tile, tile) && other.keyBytes == keyBytes;
    });
    if (known != latest.end()) {
        latest.splice(latest.begin(), latest, known);
    } else {
        latest.push_front({mask, tile, keyBytes, std::make_shared<MedianNetwork>(mask, tile, keyBytes)});
        if (latest.size() > kept) latest.pop_back();
    }
    return latest.front().network;
}

MedianNetwork::MedianNetwork(NppiSize mask, NppiSize tile, std::size_t keyBytes) : tile_(tile) {
    const MedianGraph graph(mask, tile);
    rows_ = graph.rows();
    const auto keySize = static_cast<std::ptrdiff_t>(keyBytes);
    const std::ptrdiff_t lanes = MinMaxProgram::laneBytes / keySize;
    // Pixels, sorted columns and medians of a strip stay in the second-level cache.
    constexpr std::ptrdiff_t cacheBytes = 1 << 19;
    const std::ptrdiff_t rowsHeld = rows_ + graph.coreRows() + tile.height;
    const std::ptrdiff_t registers = cacheBytes / (rowsHeld * tile.width * MinMaxProgram::laneBytes);
    tilesAcross_ =
        lanes * std::clamp<std::ptrdiff_t>(registers, 1, std::max<std::ptrdiff_t>(4096 / (lanes * tile.width), 1));
    const std::ptrdiff_t shifts = (graph.columns() - 1) / tile.width;
    planeStride_ = (tilesAcross_ + shifts + lanes - 1) / lanes * lanes;

    const std::ptrdiff_t rowBytes = rowStride() * keySize;
    const std::ptrdiff_t sortedColumns = rows_ * rowBytes;
    medians_ = sortedColumns + graph.coreRows() * rowBytes;
    const std::ptrdiff_t slots = medians_ + std::ptrdiff_t{tile.width} * tile.height * tilesAcross_ * keySize;

    MinMaxGraph columnGraph;
    MinMaxGraph::Values column;
    for (int j = 0; j < graph.coreRows(); ++j) column.push_back(columnGraph.input(j));
    column = columnGraph.sorted(column);
    const auto coreAddress = [&](std::int32_t j) { return static_cast<Address>((tile.height - 1 + j) * rowBytes); };
    const bool isSorted = column.size() == 1;  // a core of one row is used where it lies
    std::vector<std::pair<MinMaxGraph::Value, Address>> results;
    for (std::size_t j = 0; j < column.size() && !isSorted; ++j)
        results.emplace_back(column[j], sortedColumns + static_cast<std::ptrdiff_t>(j) * rowBytes);
    columnProgram_ = MinMaxProgram(columnGraph, coreAddress, results, static_cast<Address>(slots));

    const auto inputAddress = [&](std::int32_t number) {
        const std::ptrdiff_t row = number / graph.columns(), position = number % graph.columns();
        const std::ptrdiff_t rowAddress = isSorted && row >= rows_ ? coreAddress(0) : row * rowBytes;
        const std::ptrdiff_t key = position % tile.width * planeStride_ + position / tile.width;
        return static_cast<Address>(rowAddress + key * keySize);
    };
    results.clear();
    for (std::size_t i = 0; i < graph.medians.size(); ++i)
        results.emplace_back(graph.medians[i], medians_ + static_cast<std::ptrdiff_t>(i) * tilesAcross_ * keySize);
    tileProgram_ = MinMaxProgram(graph.graph, inputAddress, results, static_cast<Address>(slots));
    bytes_ =
        static_cast<std::size_t>(slots + rowBytes + std::max(columnProgram_.slotBytes(), tileProgram_.slotBytes()));
}

}  // namespace zel::host
