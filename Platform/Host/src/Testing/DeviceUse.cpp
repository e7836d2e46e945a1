#include <host_device.h>

#include "Device/Allocations.h"
#include "Device/Plans.h"
#include "Device/Streams.h"

namespace zel::host {

DeviceUse deviceUse() {
    const Allocations::Use memory = allocations().use();
    return {memory.count, memory.bytes, memory.peakBytes, liveStreams(), livePlans()};
}

void resetPeakBytes() {
    allocations().resetPeak();
}

}  // namespace zel::host
