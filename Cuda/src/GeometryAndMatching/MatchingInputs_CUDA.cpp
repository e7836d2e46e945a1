#include "MatchingInputs_CUDA.h"

#include "ImageFiltering/FftUtilities_CUDA.h"
#include "Kernels/ConvertImage.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"
#include "zel/ImageModelAdapter.h"
#include "zel/children/IntensityStatistics.h"
#include "zel/children/ResetImage.h"
#include "zel/children/SwapQuadrants.h"

namespace zel::cuda {

double varianceThreshold(AbstractPrivateImplementation* run, const ImageModel& image) {
    const auto statistics = IntensityStatistics::New(run);
    statistics->inputImage = &image;
    run->runChildAlgo(statistics.get());
    const double deviation = statistics->outputStandardDeviation.get().getRealValue();
    return deviation * deviation * 0.01;
}

RefImpl<TemporaryImage> maskOfOnes(AbstractPrivateImplementation* run, const ImageModel& templateImage) {
    auto mask = TemporaryImage::New(LocationMode::hostMemory);
    mask->reserve(VoxelTypes::uint8, templateImage.getDimension(0), templateImage.getDimension(1),
                  templateImage.getDimension(2), templateImage.getDimension(3), templateImage.getDimension(4));
    ImageModel* const image = mask->getImageModel();
    image->setBackgroundValue(0);
    image->enforceSameCharacteristics(&templateImage, 4);
    const auto reset = ResetImage::New(run);
    reset->inputImage = image;
    reset->value = 1.0;
    reset->outputImage = image;
    run->runChildAlgo(reset.get());
    return mask;
}

template <typename R>
DeviceImage<SpectrumOf<R>> uploadFilter(AbstractPrivateImplementation* run, const ImageModel& filter,
                                        const Size3& boxSize, cudaStream_t stream) {
    const auto [width, height, depth] = boxSize;
    const Size3 centre = {filter.getDimension(0) >> 1, filter.getDimension(1) >> 1, filter.getDimension(2) >> 1};
    // One column more than the box, so that the columns from the centre on are there for even and odd widths.
    const Size3 origin = {centre[0] - ((width + 1) >> 1), centre[1] - (height >> 1), centre[2] - (depth >> 1)};
    const ImageModelSizeProxy window = partOf(filter, origin, {width + 1, height, depth});

    const auto swapped = TemporaryImage::New(LocationMode::hostMemory);
    const auto swap = SwapQuadrants::New(run);
    swap->inputImage = &window;
    swap->direction = 0;
    swap->outputImage = swapped->getImageModel();
    run->runChildAlgo(swap.get());

    constexpr VoxelTypes spectrumType = sizeof(R) == sizeof(float) ? VoxelTypes::complex64 : VoxelTypes::complex128;
    const ImageModelAdapter spectrum(static_cast<const ImageModel*>(swapped->getImageModel()), spectrumType,
                                     DataConvertionTypes::cast);
    const Size3 half = {(width >> 1) + 1, height, depth};
    DeviceImage<SpectrumOf<R>> result(half[0], half[1], half[2], false);
    copyImageToDevice3d(partOf(spectrum, {0, 0, 0}, half), result.data(), result.pitch(), result.slicePitch(), 0, 0,
                        stream);
    return result;
}

template <typename T, typename R>
void placeImage(const ImageModel& image, DeviceImage<R>& buffer, const Size3& size, const Size3& at,
                cudaStream_t stream) {
    const auto [width, height, depth] = sizeOf(image);
    R* const target =
        offsetBytes(buffer.data(), at[2] * buffer.slicePitch() + at[1] * buffer.pitch() + at[0] * sizeof(R));
    if (image.isDeviceResident()) {
        std::size_t pitch = 0;
        const auto* const source = static_cast<const T*>(deviceDataPointerConst(&image, pitch));
        convertImage<T, R>(source, pitch, deviceSlicePitch(&image), target, buffer.pitch(), buffer.slicePitch(), width,
                           height, depth, RoundMode::HalfUp, stream);
    } else {
        const ImageModelAdapter converted(&image, voxelTypeOf<R>, DataConvertionTypes::cast);
        copyImageToDevice3d(converted, target, buffer.pitch(), buffer.slicePitch(), 0, 0, stream);
    }
    fillOutsideRegion3d(buffer.data(), buffer.pitch(), buffer.slicePitch(), at[0], at[1], at[2], width, height, depth,
                        size[0], size[1], size[2], R{0}, stream);
}

template DeviceImage<float2> uploadFilter<float>(AbstractPrivateImplementation*, const ImageModel&, const Size3&,
                                                 cudaStream_t);
template DeviceImage<double2> uploadFilter<double>(AbstractPrivateImplementation*, const ImageModel&, const Size3&,
                                                   cudaStream_t);

#define ZEL_PLACE_IMAGE(name, code, type)                                                                       \
    template void placeImage<type, FftReal<type>>(const ImageModel&, DeviceImage<FftReal<type>>&, const Size3&, \
                                                  const Size3&, cudaStream_t);
ZEL_FOR_EACH_KERNEL_TYPE(ZEL_PLACE_IMAGE)
#undef ZEL_PLACE_IMAGE

}  // namespace zel::cuda
