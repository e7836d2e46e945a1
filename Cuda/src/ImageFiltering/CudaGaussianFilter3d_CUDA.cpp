#include "CudaGaussianFilter3d_CUDA.h"

#include "GaussianKernel_CUDA.h"
#include "Helper/raise.h"
#include "Helper/safe_cast.h"
#include "Kernels/CudaConvolution1d.h"
#include "Tiling/BaseImplCudaAlgorithm3dImageToImage.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "zel/algorithms/CudaGaussianFilter3d.h"

namespace zel::cuda {

namespace {

using filtering::linear::KernelDirection3D;

/// Ends a pass: its launch went unchecked.
void endPass(AbstractPrivateImplementation& implementation) {
    checkCudaStatus(cudaDeviceSynchronize());
    implementation.throwIfCancelled();
    implementation.nextStep();
}

/// The passes along x, y and z: into the work area, within it, and out of it. It may be the output itself.
template <typename Tin, typename Twork, typename Tout, typename Functor>
void gaussianThreePasses(const Tin* in, std::size_t inPitch, std::size_t inSlicePitch, Twork* temporary,
                         std::size_t temporaryPitch, std::size_t temporarySlicePitch, Tout* out, std::size_t outPitch,
                         std::size_t outSlicePitch, const Vector3<unsigned>& size, cudaStream_t stream,
                         const Functor& functor) {
    const auto taps = [](const std::shared_ptr<void>& kernel) { return static_cast<const float*>(kernel.get()); };
    convolution1dOnRows(in, inPitch, inSlicePitch, temporary, temporaryPitch, temporarySlicePitch, size.x, size.y,
                        size.z, taps(functor.tapsX), functor.tapCountX, stream, functor.multiProcessors,
                        functor.coresPerMultiProcessor);
    endPass(*functor.implementation);
    convolution1dOnColumns(temporary, temporaryPitch, temporarySlicePitch, temporary, temporaryPitch,
                           temporarySlicePitch, size.x, size.y, size.z, taps(functor.tapsY), functor.tapCountY, stream,
                           functor.multiProcessors, functor.coresPerMultiProcessor);
    endPass(*functor.implementation);
    convolution1dOnZLines(temporary, temporaryPitch, temporarySlicePitch, out, outPitch, outSlicePitch, size.x, size.y,
                          size.z, taps(functor.tapsZ), functor.tapCountZ, stream, functor.multiProcessors,
                          functor.coresPerMultiProcessor);
}

/// All that the processing of a tile needs; made once per run. T is the input's voxel type, U the output's.
template <typename T, typename U>
struct CudaGaussianFilter3dTilingProcessingFunctor {
    template <typename Work>
    void process(const T* src, std::size_t srcPitch, std::size_t srcSlicePitch, Work* tmp, std::size_t tmpPitch,
                 std::size_t tmpSlicePitch, U* dst, std::size_t dstPitch, std::size_t dstSlicePitch,
                 const Vector3<unsigned>& size, cudaStream_t stream) const {
        gaussianThreePasses(src, srcPitch, srcSlicePitch, tmp, tmpPitch, tmpSlicePitch, dst, dstPitch, dstSlicePitch,
                            size, stream, *this);
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
class CudaGaussianFilter3dImpl final
    : public BaseImplCudaAlgorithm3dImageToImage<CudaGaussianFilter3d, T, U,
                                                 CudaGaussianFilter3dTilingProcessingFunctor<T, U>, 3> {
    using BaseImplCudaAlgorithm3dImageToImage<CudaGaussianFilter3d, T, U,
                                              CudaGaussianFilter3dTilingProcessingFunctor<T, U>,
                                              3>::BaseImplCudaAlgorithm3dImageToImage;
};

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
void runGaussian(CudaGaussianFilter3d* algorithm) {
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
    implementation.run();
}

template <typename T>
void runGaussianInto(CudaGaussianFilter3d* algorithm) {
    if (algorithm->outputImage.get()->getDataType() == VoxelTypes::float32) return runGaussian<T, float>(algorithm);
    runGaussian<T, T>(algorithm);
}

}  // namespace

void CudaGaussianFilter3dRunner::run(BaseAlgorithm* algorithm) {
    auto* const filter = safe_cast<CudaGaussianFilter3d*>(algorithm);
    const VoxelTypes type = filter->inputImage.get()->getDataType();
    switch (type) {
        case VoxelTypes::uint8:
            return runGaussianInto<std::uint8_t>(filter);
        case VoxelTypes::uint16:
            return runGaussianInto<std::uint16_t>(filter);
        case VoxelTypes::uint32:
            return runGaussianInto<std::uint32_t>(filter);
        case VoxelTypes::int8:
            return runGaussianInto<std::int8_t>(filter);
        case VoxelTypes::int16:
            return runGaussianInto<std::int16_t>(filter);
        case VoxelTypes::int32:
            return runGaussianInto<std::int32_t>(filter);
        case VoxelTypes::float32:
            return runGaussian<float, float>(filter);
        case VoxelTypes::float64:
            return runGaussianInto<double>(filter);
        default:
            raise<RuntimeError>("Cuda/src/ImageFiltering/CudaGaussianFilter3d_CUDA", __LINE__,
                                "Unsupported input data type ", static_cast<int>(type));
    }
}

}  // namespace zel::cuda
