#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zel::host {

/// A computation made of minima and maxima of two values: what sorting networks come to. It is put together once and
/// carried out many times, for as many pixels at a time as fit a register: at compile time, see FixedNetwork, or for
/// any mask, see MinMaxProgram.
class MinMaxGraph {
public:
    using Value = std::int32_t;  ///< names an input or a result
    using Values = std::vector<Value>;

    enum class Kind : std::uint8_t { input, minimum, maximum };
    struct Node {
        Kind kind;
        Value a;  ///< of an input: its number
        Value b;
    };

    constexpr Value input(std::int32_t number) { return add(Kind::input, number, number); }
    constexpr Value minimum(Value a, Value b) { return add(Kind::minimum, a, b); }
    constexpr Value maximum(Value a, Value b) { return add(Kind::maximum, a, b); }

    /// The values of two ascending lists in ascending order, by Batcher's odd-even merge (Sorting networks and their
    /// applications, 1968).
    constexpr Values merged(const Values& a, const Values& b);
    constexpr Values merged(std::vector<Values> lists);
    /// Values in ascending order.
    constexpr Values sorted(const Values& values);
    /// The value that has `rank` others before it in the union of two ascending lists.
    constexpr Value ofRank(const Values& a, const Values& b, std::size_t rank);

    constexpr const std::vector<Node>& nodes() const { return nodes_; }

private:
    /// The 1st, 3rd ... of the values, or the 2nd, 4th ...
    static constexpr Values everyOther(const Values& values, std::size_t first) {
        Values result;
        for (std::size_t i = first; i < values.size(); i += 2) result.push_back(values[i]);
        return result;
    }

    constexpr Value add(Kind kind, Value a, Value b) {
        nodes_.push_back({kind, a, b});
        return static_cast<Value>(nodes_.size() - 1);
    }

    std::vector<Node> nodes_;
};

constexpr MinMaxGraph::Values MinMaxGraph::merged(const Values& a, const Values& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    if (a.size() == 1 && b.size() == 1) return {minimum(a[0], b[0]), maximum(a[0], b[0])};
    const Values odd = merged(everyOther(a, 0), everyOther(b, 0)), even = merged(everyOther(a, 1), everyOther(b, 1));
    // Only the neighbours even[i] and odd[i + 1] may still be the wrong way round.
    Values result{odd[0]};
    const std::size_t pairs = std::min(even.size(), odd.size() - 1);
    for (std::size_t i = 0; i < pairs; ++i) {
        result.push_back(minimum(even[i], odd[i + 1]));
        result.push_back(maximum(even[i], odd[i + 1]));
    }
    result.insert(result.end(), even.begin() + static_cast<std::ptrdiff_t>(pairs), even.end());
    result.insert(result.end(), odd.begin() + static_cast<std::ptrdiff_t>(pairs) + 1, odd.end());
    return result;
}

constexpr MinMaxGraph::Values MinMaxGraph::merged(std::vector<Values> lists) {
    const auto isShorter = [](const Values& a, const Values& b) { return a.size() < b.size(); };
    const auto takeShortest = [&] {
        const auto shortest = std::min_element(lists.begin(), lists.end(), isShorter);
        Values result = *shortest;
        lists.erase(shortest);
        return result;
    };
    if (lists.empty()) return {};
    while (lists.size() > 1) {
        const Values first = takeShortest(), second = takeShortest();
        lists.push_back(merged(first, second));
    }
    return takeShortest();
}

constexpr MinMaxGraph::Values MinMaxGraph::sorted(const Values& values) {
    if (values.size() < 2) return values;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>((values.size() + 1) / 2);
    return merged(sorted({values.begin(), middle}), sorted({middle, values.end()}));
}

constexpr MinMaxGraph::Value MinMaxGraph::ofRank(const Values& a, const Values& b, std::size_t rank) {
    // The highest of the minima of a[i] and b[rank - i]; where one list has no such value, of the other's, of which the
    // last in each list is the highest.
    constexpr Value none = -1;
    Value highest = none, lastOfA = none, lastOfB = none;
    const auto take = [&](Value value) { highest = highest == none ? value : maximum(highest, value); };
    for (std::size_t i = 0; i <= rank; ++i) {
        const bool hasA = i < a.size(), hasB = rank - i < b.size();
        if (hasA && hasB) take(minimum(a[i], b[rank - i]));
        if (hasA && !hasB) lastOfA = a[i];
        if (hasB && !hasA && lastOfB == none) lastOfB = b[rank - i];
    }
    if (lastOfA != none) take(lastOfA);
    if (lastOfB != none) take(lastOfB);
    return highest;
}

}  // namespace zel::host
