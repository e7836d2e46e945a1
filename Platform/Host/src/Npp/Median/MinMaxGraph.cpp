#include "Npp/Median/MinMaxGraph.h"

#include <algorithm>
#include <utility>

namespace zel::host {
namespace {

using Values = MinMaxGraph::Values;

/// The 1st, 3rd ... and the 2nd, 4th ... of the values.
std::pair<Values, Values> dealt(const Values& values) {
    std::pair<Values, Values> result;
    for (std::size_t i = 0; i < values.size(); ++i) (i % 2 == 0 ? result.first : result.second).push_back(values[i]);
    return result;
}

}  // namespace

Values MinMaxGraph::merged(const Values& a, const Values& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    if (a.size() == 1 && b.size() == 1) return {minimum(a[0], b[0]), maximum(a[0], b[0])};
    const auto [oddA, evenA] = dealt(a);
    const auto [oddB, evenB] = dealt(b);
    const Values odd = merged(oddA, oddB), even = merged(evenA, evenB);
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

Values MinMaxGraph::merged(std::vector<Values> lists) {
    const auto isLonger = [](const Values& a, const Values& b) { return a.size() > b.size(); };
    while (lists.size() > 1) {
        std::stable_sort(lists.begin(), lists.end(), isLonger);
        const Values last = std::move(lists.back());
        lists.pop_back();
        lists.back() = merged(lists.back(), last);
    }
    return lists.empty() ? Values{} : lists.front();
}

Values MinMaxGraph::sorted(const Values& values) {
    if (values.size() < 2) return values;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>((values.size() + 1) / 2);
    return merged(sorted({values.begin(), middle}), sorted({middle, values.end()}));
}

MinMaxGraph::Value MinMaxGraph::ofRank(const Values& a, const Values& b, std::size_t rank) {
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
