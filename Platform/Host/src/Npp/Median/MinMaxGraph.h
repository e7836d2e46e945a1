#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zel::host {

/// A computation made of minima and maxima of two values: what sorting networks come to. It is put together once and
/// carried out many times, for as many pixels at a time as fit a register; see MinMaxProgram.
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

    Value input(std::int32_t number) { return add(Kind::input, number, number); }
    Value minimum(Value a, Value b) { return add(Kind::minimum, a, b); }
    Value maximum(Value a, Value b) { return add(Kind::maximum, a, b); }

    /// The values of two ascending lists in ascending order, by Batcher's odd-even merge (Sorting networks and their
    /// applications, 1968).
    Values merged(const Values& a, const Values& b);
    Values merged(std::vector<Values> lists);
    /// Values in ascending order.
    Values sorted(const Values& values);
    /// The value that has `rank` others before it in the union of two ascending lists.
    Value ofRank(const Values& a, const Values& b, std::size_t rank);

    const std::vector<Node>& nodes() const { return nodes_; }

private:
    Value add(Kind kind, Value a, Value b) {
        nodes_.push_back({kind, a, b});
        return static_cast<Value>(nodes_.size() - 1);
    }

    std::vector<Node> nodes_;
};

}  // namespace zel::host
