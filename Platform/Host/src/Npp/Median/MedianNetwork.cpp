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

MedianNetwork::MedianNetwork(NppiSize mask, NppiSize tile, std::size_t keyBytes) : layout(mask, tile, keyBytes) {
    const auto slots = static_cast<Address>(layout.end);
    const auto at = [](std::ptrdiff_t address) { return static_cast<Address>(address); };

    MinMaxGraph columnGraph;
    MinMaxGraph::Values column;
    std::vector<std::pair<MinMaxGraph::Value, Address>> results;
    for (std::int32_t j = 0; j < layout.coreRows(); ++j) column.push_back(columnGraph.input(j));
    column = columnGraph.sorted(column);
    for (std::size_t j = 0; j < column.size() && column.size() > 1; ++j)
        results.emplace_back(column[j], at(layout.sortedAddress(static_cast<std::ptrdiff_t>(j))));
    columnProgram_ = MinMaxProgram(
        columnGraph, [&](auto j) { return at(layout.coreAddress(j)); }, results, slots);

    const MedianGraph graph(mask, tile);
    results.clear();
    for (std::size_t i = 0; i < graph.medians.size(); ++i)
        results.emplace_back(graph.medians[i], at(layout.medianAddress(static_cast<std::ptrdiff_t>(i))));
    tileProgram_ = MinMaxProgram(
        graph.graph, [&](auto number) { return at(layout.inputAddress(number)); }, results, slots);
    // The slots move along with the lanes of a row.
    layout.bytes +=
        static_cast<std::size_t>(layout.rowStride + std::max(columnProgram_.slotBytes(), tileProgram_.slotBytes()));
}

}  // namespace zel::host
