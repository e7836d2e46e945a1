#include "Gpu_CUDA.h"

#include "StatusChecks_CUDA.h"

namespace zel::cuda {

int getDeviceCount() {
    int count = 0;
    checkCudaStatus(cudaGetDeviceCount(&count));
    return count;
}

ChangeCurrentGpu::ChangeCurrentGpu(int deviceId) {
    ChangeCurrentGpu::saveCurrentDevice();
    if (deviceId != previousDevice_) checkCudaStatus(cudaSetDevice(deviceId));
}

ChangeCurrentGpu::~ChangeCurrentGpu() {
    try {
        if (restoreNeeded_) ChangeCurrentGpu::restoreDevice();
    } catch (...) {  // NOLINT(bugprone-empty-catch): see the declaration
    }
}

void ChangeCurrentGpu::saveCurrentDevice() {
    checkCudaStatus(cudaGetDevice(&previousDevice_));
    restoreNeeded_ = true;
}

void ChangeCurrentGpu::restoreDevice() {
    checkCudaStatus(cudaSetDevice(previousDevice_));
}

std::shared_ptr<ChangeCurrentGpu> makeChangeCurrentGpu(int deviceId) {
    return std::make_shared<ChangeCurrentGpu>(deviceId);
}

std::shared_ptr<cudaStream_t> makeCudaStream() {
    std::shared_ptr<cudaStream_t> stream(new cudaStream_t(nullptr), [](cudaStream_t* held) {
        if (*held != nullptr) ignoreCudaStatus(cudaStreamDestroy(*held));
        delete held;
    });
    checkCudaStatus(cudaStreamCreate(stream.get()));
    return stream;
}

namespace {

std::shared_ptr<NppStreamContext> makeContextWithOwnStream() {
    std::shared_ptr<NppStreamContext> result(new NppStreamContext(), [](NppStreamContext* held) {
        if (held->hStream != nullptr) ignoreCudaStatus(cudaStreamDestroy(held->hStream));
        delete held;
    });
    checkCudaStatus(cudaStreamCreate(&result->hStream));
    return result;
}

std::shared_ptr<NppStreamContext> makeContextOnStream(cudaStream_t stream) {
    auto result = std::make_shared<NppStreamContext>();
    result->hStream = stream;
    return result;
}

int chooseDevice(const CudaContext* context) {
    if (context != nullptr && context->deviceId >= 0 && context->deviceId < getDeviceCount()) return context->deviceId;
    int current = 0;
    checkCudaStatus(cudaGetDevice(&current));
    return current;
}

void fillDeviceFields(NppStreamContext& context) {
    cudaDeviceProp properties{};
    checkCudaStatus(cudaGetDeviceProperties(&properties, context.nCudaDeviceId));
    context.nMultiProcessorCount = properties.multiProcessorCount;
    context.nMaxThreadsPerMultiProcessor = properties.maxThreadsPerMultiProcessor;
    context.nMaxThreadsPerBlock = properties.maxThreadsPerBlock;
    context.nSharedMemPerBlock = properties.sharedMemPerBlock;
    checkCudaStatus(cudaDeviceGetAttribute(&context.nCudaDevAttrComputeCapabilityMajor,
                                           cudaDevAttrComputeCapabilityMajor, context.nCudaDeviceId));
    checkCudaStatus(cudaDeviceGetAttribute(&context.nCudaDevAttrComputeCapabilityMinor,
                                           cudaDevAttrComputeCapabilityMinor, context.nCudaDeviceId));
}

}  // namespace

std::shared_ptr<NppStreamContext> makeNppStreamContext(const CudaContext* context) {
    const bool ownStream = context == nullptr || context->stream == nullptr;
    auto result = ownStream ? makeContextWithOwnStream() : makeContextOnStream(context->stream);
    checkCudaStatus(cudaStreamGetFlags(result->hStream, &result->nStreamFlags));
    result->nCudaDeviceId = chooseDevice(context);
    fillDeviceFields(*result);
    return result;
}

}  // namespace zel::cuda
