#pragma once

#include <cuda_runtime.h>
#include <nppdefs.h>

#include <memory>

#include "zel/CudaContext.h"
#include "zel/SafeObject.h"

namespace zel::cuda {

/// Number of GPUs, which may be 0. @throws RuntimeError when it cannot be found out.
int getDeviceCount();

/// Selects a GPU on the calling thread and puts the previous one back in the end.
class ChangeCurrentGpu : public SafeObject {
public:
    explicit ChangeCurrentGpu(int deviceId);
    /// An error while putting back is swallowed: it may be unwinding that ends the guard.
    ~ChangeCurrentGpu() override;

    virtual void saveCurrentDevice();
    virtual void restoreDevice();

private:
    bool restoreNeeded_ = false;
    int previousDevice_ = 0;
};

std::shared_ptr<ChangeCurrentGpu> makeChangeCurrentGpu(int deviceId);

/// A new stream on the current device, destroyed with its last owner.
std::shared_ptr<cudaStream_t> makeCudaStream();

/// Device and stream of a run, as NPP wants them. Without a stream in what the caller asks for, one is made on the
/// current device and destroyed with the last owner of the result.
/// @param context  what the caller asks for; may be null. An id that is no GPU's stands for the current device.
std::shared_ptr<NppStreamContext> makeNppStreamContext(const CudaContext* context);

}  // namespace zel::cuda
