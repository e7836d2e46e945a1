#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "Npp/Median/MinMaxGraph.h"
#include "Npp/Median/NetworkLayout.h"

namespace zel::host {

/// A graph of minima and maxima as a list of instructions on memory, each for a register's worth of neighbouring lanes:
/// all that is left of the graph once what no result depends on is dropped. Addresses are bytes from a base that moves
/// from lanes to lanes, so that inputs, intermediate values and results move with it.
class MinMaxProgram {
public:
    static constexpr std::ptrdiff_t laneBytes = NetworkLayout::registerBytes;
    using Address = std::int32_t;

    MinMaxProgram() = default;
    /// @param inputAddress  of an input's number.
    /// @param results       what is kept, and where.
    /// @param slots         where intermediate values may lie, slotBytes() from there on.
    MinMaxProgram(const MinMaxGraph& graph, const std::function<Address(std::int32_t)>& inputAddress,
                  const std::vector<std::pair<MinMaxGraph::Value, Address>>& results, Address slots);

    std::ptrdiff_t slotBytes() const { return slotCount_ * laneBytes; }

    /// For `registers` registers of lanes one behind the other from `base` on.
    template <typename Key>
    void run(std::byte* base, std::ptrdiff_t registers) const {
        for (std::ptrdiff_t i = 0; i < registers; ++i) runOnce<Key>(base + i * laneBytes);
    }

private:
    enum class Kind : std::uint8_t { minimum, maximum, both };
    struct Instruction {
        Kind kind;
        Address a, b;       ///< values' numbers until they have addresses
        Address low, high;  ///< what becomes of them; unused: none
    };
    /// Instructions of one kind, carried out in order.
    struct Run {
        Kind kind;
        std::int32_t count;
    };
    static constexpr Address none = -1;

    static std::vector<Instruction> instructionsOf(const MinMaxGraph& graph, const std::vector<char>& isNeeded);
    static std::vector<Instruction> inRuns(const std::vector<Instruction>& instructions, std::size_t values);

    template <typename Key>
    void runOnce(std::byte* base) const {
        using Lanes [[gnu::vector_size(laneBytes)]] = Key;
        const auto load = [base](Address address) {
            Lanes lanes;
            std::memcpy(&lanes, base + address, sizeof(lanes));
            return lanes;
        };
        const auto store = [base](Address address, const Lanes& lanes) {
            std::memcpy(base + address, &lanes, sizeof(lanes));
        };
        const Address* next = operands_.data();
        for (const Run& run : runs_) {
            switch (run.kind) {
                case Kind::minimum:
                    for (const Address* const end = next + 3 * std::ptrdiff_t{run.count}; next < end; next += 3) {
                        const Lanes a = load(next[0]), b = load(next[1]);
                        store(next[2], a < b ? a : b);
                    }
                    break;
                case Kind::maximum:
                    for (const Address* const end = next + 3 * std::ptrdiff_t{run.count}; next < end; next += 3) {
                        const Lanes a = load(next[0]), b = load(next[1]);
                        store(next[2], a > b ? a : b);
                    }
                    break;
                case Kind::both:
                    for (const Address* const end = next + 4 * std::ptrdiff_t{run.count}; next < end; next += 4) {
                        const Lanes a = load(next[0]), b = load(next[1]);
                        store(next[2], a < b ? a : b);
                        store(next[3], a > b ? a : b);
                    }
                    break;
            }
        }
    }

    std::vector<Run> runs_;
    std::vector<Address> operands_;
    std::ptrdiff_t slotCount_ = 0;
};

}  // namespace zel::host
