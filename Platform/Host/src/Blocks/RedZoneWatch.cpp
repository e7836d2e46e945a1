#include "Blocks/RedZoneWatch.h"

#include <algorithm>
#include <cstring>

#include "Device/Allocations.h"

namespace zel::host {

void RedZoneWatch::look() {
    if (const std::uint64_t changes = allocations().changes(); changes != changes_) {
        edges_ = allocations().redZoneEdges();
        changes_ = changes;
    }
    // What another thread of the program has freed just now is no longer among the live ones.
    if (!isIntact()) allocations().checkRedZones();
}

bool RedZoneWatch::isIntact() const {
    return std::all_of(edges_.begin(), edges_.end(), [](const std::byte* edge) {
        std::uint64_t word;
        std::memcpy(&word, edge, sizeof word);
        return word == redZoneWord;
    });
}

}  // namespace zel::host
