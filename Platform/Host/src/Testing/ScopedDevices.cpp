#include <host_device.h>

#include "Device/Devices.h"

namespace zel::host {

ScopedDevices::ScopedDevices(int count, std::uint64_t bytesEach)
    : previousCount_(deviceCount()), previousBytes_(deviceBytes()) {
    setDevices(count, bytesEach);
}
ScopedDevices::~ScopedDevices() {
    setDevices(previousCount_, previousBytes_);
}

}  // namespace zel::host
