#include "Calls/RuntimeCall.h"
#include "Device/Streams.h"

using namespace zel::host;

cudaError_t cudaStreamCreate(cudaStream_t* stream) {
    return deviceCall("cudaStreamCreate", [&] {
        if (stream == nullptr) return cudaErrorInvalidValue;
        *stream = createStream(currentDevice());
        return cudaSuccess;
    });
}

cudaError_t cudaStreamDestroy(cudaStream_t stream) {
    return releasingCall("cudaStreamDestroy", [&] {
        if (isRetiredStream(stream)) return releasedTooLate(cudaErrorInvalidResourceHandle);
        if (stream == nullptr || !isStream(stream)) return report(cudaErrorInvalidResourceHandle);
        return destroyStream(stream);
    });
}

cudaError_t cudaStreamGetFlags(cudaStream_t stream, unsigned int* flags) {
    return deviceCall("cudaStreamGetFlags", [&] {
        if (flags == nullptr) return cudaErrorInvalidValue;
        if (!isStream(stream)) return cudaErrorInvalidResourceHandle;
        *flags = cudaStreamDefault;
        return cudaSuccess;
    });
}

cudaError_t cudaStreamSynchronize(cudaStream_t stream) {
    return synchronisingCall("cudaStreamSynchronize", [&] {
        if (!isStream(stream)) return cudaErrorInvalidResourceHandle;
        const cudaError_t status = synchronizeStream(streamOf(stream));
        allocations().checkRedZones();
        return status;
    });
}
