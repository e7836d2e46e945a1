#include "host_runtime/ThrustCall.h"

#include "Calls/RuntimeCall.h"
#include "Device/Streams.h"

namespace zel::host {

cudaError_t callThrust(const char* name, ThrustWork kind, const std::function<void()>& work) {
    const cudaError_t earlier = takePendingError();
    const cudaError_t status = deviceCall(name, [&] {
        if (kind == ThrustWork::launch && earlier != cudaSuccess) return earlier;
        submit(nullptr, work);
        return synchronizeStream(streamOf(nullptr));
    });
    takePendingError();
    return status;
}

}  // namespace zel::host
