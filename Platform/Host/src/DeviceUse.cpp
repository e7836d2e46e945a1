#include "Allocations.h"
#include "HostDevice.h"
#include "Plans.h"
#include "Streams.h"

namespace zel::host {

DeviceUse deviceUse() {
    const Allocations::Use memory = allocations().use();
    return {memory.count, memory.bytes, memory.peakBytes, liveStreams(), livePlans()};
}

void resetPeakBytes() {
    allocations().resetPeak();
}

}  // namespace zel::host
