#include "Device/PendingError.h"

#include <utility>

namespace zel::host {
namespace {

constinit thread_local cudaError_t pending = cudaSuccess;

}  // namespace

cudaError_t report(cudaError_t status) {
    if (status != cudaSuccess) pending = status;
    return status;
}

cudaError_t takePendingError() {
    return std::exchange(pending, cudaSuccess);
}
cudaError_t pendingError() {
    return pending;
}

}  // namespace zel::host
