#include "Npp/Median/MinMaxProgram.h"

#include <algorithm>

namespace zel::host {
namespace {

using Value = MinMaxGraph::Value;

/// What the results depend on, by value.
std::vector<char> neededFor(const std::vector<std::pair<Value, MinMaxProgram::Address>>& results,
                            const MinMaxGraph& graph) {
    const auto& nodes = graph.nodes();
    std::vector<char> isNeeded(nodes.size(), 0);
    for (const auto& result : results) isNeeded[static_cast<std::size_t>(result.first)] = 1;
    for (std::size_t i = nodes.size(); i-- > 0;) {
        if (!isNeeded[i] || nodes[i].kind == MinMaxGraph::Kind::input) continue;
        isNeeded[static_cast<std::size_t>(nodes[i].a)] = isNeeded[static_cast<std::size_t>(nodes[i].b)] = 1;
    }
    return isNeeded;
}

/// Hands out slots, the latest that became free first: it is still in the first-level cache.
class Slots {
public:
    std::int32_t take() {
        if (free_.empty()) return count_++;
        const std::int32_t slot = free_.back();
        free_.pop_back();
        return slot;
    }
    void giveBack(std::int32_t slot) { free_.push_back(slot); }
    std::int32_t count() const { return count_; }

private:
    std::vector<std::int32_t> free_;
    std::int32_t count_ = 0;
};

}  // namespace

std::vector<MinMaxProgram::Instruction> MinMaxProgram::instructionsOf(const MinMaxGraph& graph,
                                                                      const std::vector<char>& isNeeded) {
    const auto& nodes = graph.nodes();
    std::vector<Instruction> result;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!isNeeded[i] || nodes[i].kind == MinMaxGraph::Kind::input) continue;
        const auto value = static_cast<Address>(i);
        const bool isMinimum = nodes[i].kind == MinMaxGraph::Kind::minimum;
        if (!isMinimum && !result.empty() && result.back().low == value - 1 && result.back().a == nodes[i].a &&
            result.back().b == nodes[i].b) {
            result.back().kind = Kind::both;
            result.back().high = value;
        } else {
            result.push_back({isMinimum ? Kind::minimum : Kind::maximum, nodes[i].a, nodes[i].b,
                              isMinimum ? value : none, isMinimum ? none : value});
        }
    }
    return result;
}

// Each change from one kind to another costs a mispredicted jump. The instructions looked at are few, so that values
// are used soon after they were made.
std::vector<MinMaxProgram::Instruction> MinMaxProgram::inRuns(const std::vector<Instruction>& instructions,
                                                              std::size_t values) {
    constexpr std::size_t lookedAt = 256;
    std::vector<char> isKnown(values, 1), isTaken(instructions.size(), 0);
    const auto setKnown = [&](const Instruction& instruction, char known) {
        for (const Address value : {instruction.low, instruction.high})
            if (value != none) isKnown[static_cast<std::size_t>(value)] = known;
    };
    for (const Instruction& instruction : instructions) setKnown(instruction, 0);
    std::vector<Instruction> result;
    for (std::size_t first = 0; first < instructions.size();) {
        const Kind kind = instructions[first].kind;
        for (std::size_t i = first; i < std::min(first + lookedAt, instructions.size()); ++i) {
            const Instruction& next = instructions[i];
            if (isTaken[i] || next.kind != kind || !isKnown[static_cast<std::size_t>(next.a)] ||
                !isKnown[static_cast<std::size_t>(next.b)]) {
                continue;
            }
            isTaken[i] = 1;
            setKnown(next, 1);
            result.push_back(next);
        }
        while (first < instructions.size() && isTaken[first]) ++first;
    }
    return result;
}

MinMaxProgram::MinMaxProgram(const MinMaxGraph& graph, const std::function<Address(std::int32_t)>& inputAddress,
                             const std::vector<std::pair<Value, Address>>& results, Address slots) {
    const auto& nodes = graph.nodes();
    const auto instructions = inRuns(instructionsOf(graph, neededFor(results, graph)), nodes.size());

    std::vector<Address> addresses(nodes.size(), none);
    for (std::size_t i = 0; i < nodes.size(); ++i)
        if (nodes[i].kind == MinMaxGraph::Kind::input) addresses[i] = inputAddress(nodes[i].a);
    for (const auto& [value, address] : results) addresses[static_cast<std::size_t>(value)] = address;

    constexpr std::size_t never = ~std::size_t{0};
    std::vector<std::size_t> lastUse(nodes.size(), never);
    for (std::size_t i = 0; i < instructions.size(); ++i)
        for (const Address value : {instructions[i].a, instructions[i].b}) lastUse[static_cast<std::size_t>(value)] = i;

    Slots free;
    std::vector<std::int32_t> slotOf(nodes.size(), none);
    for (std::size_t i = 0; i < instructions.size(); ++i) {
        const Instruction& instruction = instructions[i];
        if (runs_.empty() || runs_.back().kind != instruction.kind) runs_.push_back({instruction.kind, 0});
        ++runs_.back().count;
        for (const Address value : {instruction.a, instruction.b}) {
            const auto index = static_cast<std::size_t>(value);
            operands_.push_back(addresses[index]);
            if (lastUse[index] == i && slotOf[index] != none) free.giveBack(slotOf[index]);
        }
        for (const Address value : {instruction.low, instruction.high}) {
            if (value == none) continue;
            const auto index = static_cast<std::size_t>(value);
            if (addresses[index] == none) {
                slotOf[index] = free.take();
                addresses[index] = slots + slotOf[index] * static_cast<Address>(laneBytes);
            }
            operands_.push_back(addresses[index]);
        }
    }
    slotCount_ = free.count();
}

}  // namespace zel::host
