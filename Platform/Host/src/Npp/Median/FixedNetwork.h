#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

#include "Npp/Median/MedianGraph.h"
#include "Npp/Median/NetworkLayout.h"

namespace zel::host {

namespace detail {

/// A graph and what is wanted of it.
struct Task {
    MinMaxGraph graph;
    MinMaxGraph::Values results;
};

/// The nodes that the results depend on, each input just before it is used first. The nodes and results then name
/// positions in this list.
constexpr std::vector<MinMaxGraph::Node> inOrderOfUse(Task& task) {
    using Value = MinMaxGraph::Value;
    auto nodes = task.graph.nodes();
    std::vector<char> isNeeded(nodes.size(), 0);
    for (const Value result : task.results) isNeeded[static_cast<std::size_t>(result)] = 1;
    for (std::size_t i = nodes.size(); i-- > 0;) {
        if (!isNeeded[i] || nodes[i].kind == MinMaxGraph::Kind::input) continue;
        isNeeded[static_cast<std::size_t>(nodes[i].a)] = isNeeded[static_cast<std::size_t>(nodes[i].b)] = 1;
    }
    std::vector<MinMaxGraph::Node> ordered;
    std::vector<Value> position(nodes.size(), -1);
    const auto add = [&](std::size_t i, const MinMaxGraph::Node& node) {
        position[i] = static_cast<Value>(ordered.size());
        ordered.push_back(node);
    };
    const auto positionOf = [&](Value value) {
        const auto i = static_cast<std::size_t>(value);
        if (position[i] < 0) add(i, nodes[i]);
        return position[i];
    };
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!isNeeded[i] || nodes[i].kind == MinMaxGraph::Kind::input) continue;
        const Value a = positionOf(nodes[i].a), b = positionOf(nodes[i].b);
        add(i, {nodes[i].kind, a, b});
    }
    for (Value& result : task.results) result = positionOf(result);
    return ordered;
}

/// A task's work as straight code.
/// @param makeTask  constant expression that gives the task.
template <auto makeTask>
class StraightCode {
public:
    /// For one register of lanes.
    /// @param load   load(number) gives an input.
    /// @param store  store(i, lanes) takes the i-th result.
    template <typename Lanes, typename Load, typename Store>
    [[gnu::always_inline]] static void run(const Load& load, const Store& store) {
        Lanes values[nodes.size()];
        [&]<std::size_t... i>(std::index_sequence<i...>) {
            // One after the other, as a list: compilers limit the length of what is joined by commas.
            static_cast<void>(std::initializer_list<int>{(values[i] = valueOf<i>(values, load), 0)...});
        }
        (std::make_index_sequence<nodes.size()>());
        [&]<std::size_t... i>(std::index_sequence<i...>) {
            (store(i, values[results[i]]), ...);
        }
        (std::make_index_sequence<results.size()>());
    }

private:
    template <std::size_t i, typename Lanes, typename Load>
    [[gnu::always_inline]] static Lanes valueOf(const Lanes* values, const Load& load) {
        constexpr MinMaxGraph::Node node = nodes[i];
        if constexpr (node.kind == MinMaxGraph::Kind::input) {
            return load(node.a);
        } else {
            const Lanes a = values[node.a], b = values[node.b];
            if constexpr (node.kind == MinMaxGraph::Kind::minimum) return a < b ? a : b;
            return a > b ? a : b;
        }
    }

    static constexpr std::size_t nodeCount = [] {
        auto task = makeTask();
        return inOrderOfUse(task).size();
    }();
    static constexpr std::size_t resultCount = [] {
        const auto task = makeTask();
        return task.results.size();
    }();
    static constexpr auto nodes = [] {
        auto task = makeTask();
        std::array<MinMaxGraph::Node, nodeCount> result{};
        std::ranges::copy(inOrderOfUse(task), result.begin());
        return result;
    }();
    static constexpr auto results = [] {
        std::array<std::size_t, resultCount> result{};
        auto task = makeTask();
        inOrderOfUse(task);
        std::ranges::copy(task.results, result.begin());
        return result;
    }();
};

template <NppiSize mask, NppiSize tile>
constexpr Task taskOfTile() {
    MedianGraph graph(mask, tile);
    return {graph.graph, graph.medians};
}

template <int height>
constexpr Task taskOfColumn() {
    Task task;
    for (int j = 0; j < height; ++j) task.results.push_back(task.graph.input(j));
    task.results = task.graph.sorted(task.results);
    return task;
}

}  // namespace detail

/// The network of a mask that is known to the compiler: what it holds stays in registers as far as they reach.
template <typename Key, NppiSize mask, NppiSize tile>
class FixedNetwork {
public:
    static constexpr NetworkLayout layout{mask, tile, sizeof(Key)};

    /// Finds the medians of the first `columns` columns under the rows of pixels at `memory`.
    static void run(std::byte* memory, std::ptrdiff_t columns) {
        const std::ptrdiff_t tiles = (columns + tile.width - 1) / tile.width;
        for (std::ptrdiff_t byte = 0; byte < layout.rowStride; byte += sizeof(Lanes)) {
            detail::StraightCode<&detail::taskOfColumn<layout.coreRows()>>::template run<Lanes>(
                [&](auto j) __attribute__((always_inline)) { return loaded(memory + byte + layout.coreAddress(j)); },
                [&](auto j, const Lanes& lanes)
                    __attribute__((always_inline)) { store(lanes, memory + byte + layout.sortedAddress(j)); });
        }
        for (std::ptrdiff_t first = 0; first < tiles; first += sizeof(Lanes) / sizeof(Key)) {
            std::byte* const base = memory + first * layout.keyBytes;
            detail::StraightCode<&detail::taskOfTile<mask, tile>>::template run<Lanes>(
                [&](auto number) __attribute__((always_inline)) { return loaded(base + layout.inputAddress(number)); },
                [&](auto i, const Lanes& lanes)
                    __attribute__((always_inline)) { store(lanes, base + layout.medianAddress(i)); });
        }
    }

private:
    /// A register of the machine: a larger vector would be kept on the stack.
    using Lanes [[gnu::vector_size(__BIGGEST_ALIGNMENT__)]] = Key;
    static_assert(NetworkLayout::registerBytes % sizeof(Lanes) == 0);

    static Lanes loaded(const std::byte* from) {
        Lanes lanes;
        std::memcpy(&lanes, from, sizeof(lanes));
        return lanes;
    }
    static void store(const Lanes& lanes, std::byte* to) { std::memcpy(to, &lanes, sizeof(lanes)); }
};

}  // namespace zel::host
