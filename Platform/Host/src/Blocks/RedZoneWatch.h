#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zel::host {

/// Looks, after each thread of a block, at the bytes next to all allocations, which is quick.
class RedZoneWatch {
public:
    /// Ends the process with a message when one has changed.
    void look();

private:
    bool isIntact() const;

    std::uint64_t changes_ = 0;
    std::vector<const std::byte*> edges_;
};

}  // namespace zel::host
