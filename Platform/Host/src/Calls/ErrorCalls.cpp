#include "Calls/CallBook.h"
#include "Device/PendingError.h"

// A fault that fires on one of these two is what they report: on a GPU, too, they are where the error of earlier work
// may come to light. A refusal is thereby given, so it does not stay pending.
cudaError_t cudaGetLastError() {
    const auto fault = zel::host::enterCall("cudaGetLastError");
    const cudaError_t taken = zel::host::takePendingError();
    return fault ? static_cast<cudaError_t>(*fault) : taken;
}

cudaError_t cudaPeekAtLastError() {
    const auto fault = zel::host::enterCall("cudaPeekAtLastError");
    return fault ? static_cast<cudaError_t>(*fault) : zel::host::pendingError();
}

const char* cudaGetErrorString(cudaError_t status) {
    switch (status) {
        case cudaSuccess:
            return "no error";
        case cudaErrorInvalidValue:
            return "invalid argument";
        case cudaErrorMemoryAllocation:
            return "out of memory";
        case cudaErrorInitializationError:
            return "initialization error";
        case cudaErrorCudartUnloading:
            return "driver shutting down";
        case cudaErrorInvalidConfiguration:
            return "invalid configuration argument";
        case cudaErrorInvalidPitchValue:
            return "invalid pitch argument";
        case cudaErrorInvalidHostPointer:
            return "invalid host pointer";
        case cudaErrorInvalidDevicePointer:
            return "invalid device pointer";
        case cudaErrorInvalidMemcpyDirection:
            return "invalid copy direction for memcpy";
        case cudaErrorInsufficientDriver:
            return "CUDA driver version is insufficient for CUDA runtime version";
        case cudaErrorDevicesUnavailable:
            return "CUDA-capable device(s) is/are busy or unavailable";
        case cudaErrorInvalidDeviceFunction:
            return "invalid device function";
        case cudaErrorNoDevice:
            return "no CUDA-capable device is detected";
        case cudaErrorInvalidDevice:
            return "invalid device ordinal";
        case cudaErrorDeviceUninitialized:
            return "invalid device context";
        case cudaErrorNoKernelImageForDevice:
            return "no kernel image is available for execution on the device";
        case cudaErrorOperatingSystem:
            return "OS call failed or operation not supported on this OS";
        case cudaErrorInvalidResourceHandle:
            return "invalid resource handle";
        case cudaErrorIllegalState:
            return "the operation cannot be performed in the present state";
        case cudaErrorNotReady:
            return "device not ready";
        case cudaErrorIllegalAddress:
            return "an illegal memory access was encountered";
        case cudaErrorLaunchOutOfResources:
            return "too many resources requested for launch";
        case cudaErrorLaunchTimeout:
            return "the launch timed out and was terminated";
        case cudaErrorContextIsDestroyed:
            return "context is destroyed";
        case cudaErrorAssert:
            return "device-side assert triggered";
        case cudaErrorIllegalInstruction:
            return "an illegal instruction was encountered";
        case cudaErrorMisalignedAddress:
            return "misaligned address";
        case cudaErrorLaunchFailure:
            return "unspecified launch failure";
        case cudaErrorNotPermitted:
            return "operation not permitted";
        case cudaErrorNotSupported:
            return "operation not supported";
        case cudaErrorUnknown:
            return "unknown error";
    }
    return "unrecognized error code";
}
