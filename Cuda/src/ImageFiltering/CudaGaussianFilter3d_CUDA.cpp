#include <algorithm>

#include "GaussianKernel_CUDA.h"
#include "Helper/raise.h"
#include "Kernels/CudaConvolution1d.h"
#include "Runners/CudaRunners_CUDA.h"
#include "Tiling/TiledImageToImage.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::cuda {

namespace {

using filtering::linear::KernelDirection3D;

/// Ends a pass: its launch went unchecked.
void endPass(AbstractPrivateImplementation& implementation) {
    checkCudaStatus(cudaDeviceSynchronize());
    implementation.throwIfCancelled();
    implementation.nextStep();
}

/// All that the processing of a tile needs; made once per run. T is the input's voxel type, U the output's.
template <typename T, typename U>
struct CudaGaussianFilter3dTilingProcessingFunctor {
    /// The passes along x, y and z: into the work area, within it, and out of it. It may be the output itself.
    template <typename Work>
    void process(const T* in, std::size_t inPitch, std::size_t inSlicePitch, Work* temporary,
                 std::size_t temporaryPitch, std::size_t temporarySlicePitch, U* out, std::size_t outPitch,
                 std::size_t outSlicePitch, const Vector3<unsigned>& size, cudaStream_t stream) const {
        const auto taps = [](const std::shared_ptr<void>& kernel) { return static_cast<const float*>(kernel.get()); };
        convolution1dOnRows(in, inPitch, inSlicePitch, temporary, temporaryPitch, temporarySlicePitch, size.x, size.y,
                            size.z, taps(tapsX), tapCountX, stream, multiProcessors, coresPerMultiProcessor);
        endPass(*implementation);
        convolution1dOnColumns(temporary, temporaryPitch, temporarySlicePitch, temporary, temporaryPitch,
                               temporarySlicePitch, size.x, size.y, size.z, taps(tapsY), tapCountY, stream,
                               multiProcessors, coresPerMultiProcessor);
        endPass(*implementation);
        convolution1dOnZLines(temporary, temporaryPitch, temporarySlicePitch, out, outPitch, outSlicePitch, size.x,
                              size.y, size.z, taps(tapsZ), tapCountZ, stream, multiProcessors, coresPerMultiProcessor);
    }

    /// Of the taps, and of that pass which needs the most.
    std::uint64_t scratchBytes(const Vector3<unsigned>& size) const {
        const auto pass = [&](std::uint64_t lines, std::uint64_t length, std::uint64_t tapCount, std::size_t bytes) {
            return convolution1dEntries(lines, length, tapCount, multiProcessors) * (bytes + 8);
        };
        const std::size_t workBytes = direct ? sizeof(U) : sizeof(float);
        return (tapCountX + tapCountY + tapCountZ) * sizeof(float) +
               std::max({pass(size.y, size.x, tapCountX, sizeof(T)), pass(size.x, size.y, tapCountY, workBytes),
                         pass(size.x, size.z, tapCountZ, workBytes)});
    }

    std::shared_ptr<void> tapsX;
    std::uint64_t tapCountX = 0;
    std::shared_ptr<void> tapsY;
    std::uint64_t tapCountY = 0;
    std::shared_ptr<void> tapsZ;
    std::uint64_t tapCountZ = 0;
    unsigned multiProcessors = 0;
    unsigned coresPerMultiProcessor = 0;
    DeviceImage<float>* intermediate = nullptr;
    bool direct = false;  ///< the passes work in the output: no intermediate image is needed
    AbstractPrivateImplementation* implementation = nullptr;
};

template <typename T, typename U>
using CudaGaussianFilter3dImpl =
    BaseImplCudaAlgorithm3dImageToImage<CudaGaussianFilter3d, T, U, CudaGaussianFilter3dTilingProcessingFunctor<T, U>,
                                        3>;

/// Where a run happens. The current device stays as it is.
struct StreamAndDevice {
    explicit StreamAndDevice(const CudaContext* context) {
        if (context != nullptr && context->stream != nullptr) {
            stream = context->stream;
            device = context->deviceId;
            return;
        }
        own = makeCudaStream();
        stream = *own;
        checkCudaStatus(cudaGetDevice(&device));
    }

    std::shared_ptr<cudaStream_t> own;  ///< null with the caller's stream
    cudaStream_t stream = nullptr;
    int device = 0;
};

template <typename T, typename U>
void runGaussian(CudaGaussianFilter3d* algorithm, RunPlan* plan) {
    const StreamAndDevice place(algorithm->cudaContext);
    CudaGaussianFilter3dTilingProcessingFunctor<T, U> functor;
    getDeviceCoreInfo(place.device, functor.multiProcessors, functor.coresPerMultiProcessor);

    const auto upload = [&](double standardDeviation, KernelDirection3D direction, std::uint64_t& tapCount) {
        return uploadGaussianKernel(place.stream, standardDeviation, algorithm->kernelSizeFactor, direction, tapCount);
    };
    functor.tapsX = upload(algorithm->standardDeviation.get().x, KernelDirection3D::x, functor.tapCountX);
    functor.tapsY = upload(algorithm->standardDeviation.get().y, KernelDirection3D::y, functor.tapCountY);
    functor.tapsZ = upload(algorithm->standardDeviation.get().z, KernelDirection3D::z, functor.tapCountZ);

    DeviceImage<float> intermediate(0, 0, 0, true);
    functor.intermediate = &intermediate;
    functor.direct =
        algorithm->voxelTypeIntermediate || algorithm->outputImage.get()->getDataType() == VoxelTypes::float32;

    const Vector3<unsigned> overlap{static_cast<unsigned>(functor.tapCountX / 2),
                                    static_cast<unsigned>(functor.tapCountY / 2),
                                    static_cast<unsigned>(functor.tapCountZ / 2)};
    CudaGaussianFilter3dImpl<T, U> implementation(algorithm, overlap, &functor, place.stream);
    functor.implementation = &implementation;
    runOrPlan(implementation, plan);
}

}  // namespace

void runOnGpu(CudaGaussianFilter3d* algorithm, RunPlan* plan) {
    const VoxelTypes type = algorithm->inputImage.get()->getDataType();
    const bool intoFloat = algorithm->outputImage.get()->getDataType() == VoxelTypes::float32;
    const bool isKnown = visitVoxelType(type, CudaGaussianFilter3d::InstanceTypes{}, [&]<typename T>() {
        if (intoFloat) {
            runGaussian<T, float>(algorithm, plan);
        } else {
            runGaussian<T, T>(algorithm, plan);
        }
    });
    if (!isKnown) {
        raise<RuntimeError>("Cuda/src/ImageFiltering/CudaGaussianFilter3d_CUDA", __LINE__,
                            "Unsupported input data type ", static_cast<int>(type));
    }
}

}  // namespace zel::cuda
