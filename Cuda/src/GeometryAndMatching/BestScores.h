#pragma once

#include <limits>

#include "Kernels/ConvertImage.h"
#include "Kernels/ExtractMaximumIntensity.h"
#include "Kernels/ResetImage.h"
#include "TemplateMatchingContext_CUDA.h"
#include "Tiling/DeviceVolume.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/ImageTransfer_CUDA.h"

namespace zel::cuda {

/// The best score so far and its row for every voxel, on the device.
/// @tparam L  voxel type of the row numbers, which wrap where it is too small.
template <typename L>
class BestScores {
public:
    BestScores(const DeviceVolume<float>& scores, const DeviceVolume<L>& rows) : scores_(scores), rows_(rows) {}

    void reset(const Size3& size, cudaStream_t stream) const {
        resetImage<float>(scores_.data, scores_.pitch, scores_.slicePitch, std::numeric_limits<float>::lowest(),
                          size[0], size[1], size[2], stream);
        resetImage<L>(rows_.data, rows_.pitch, rows_.slicePitch, L{0}, size[0], size[1], size[2], stream);
    }

    /// Merges the scores of one row of the table: the first row's are taken as they are, those of later rows where they
    /// are strictly better. So of equal scores the lowest row's is kept, and NaN only where the first row gave it.
    template <typename R>
    void merge(const TemplateMatchingContext<R>& context, std::size_t row, const Size3& size,
               cudaStream_t stream) const {
        const DeviceImage<R>& found = context.correlation();
        const Size3& at = context.resultOffset();
        const R* const scores =
            offsetBytes(found.data(), at[2] * found.slicePitch() + at[1] * found.pitch() + at[0] * sizeof(R));
        if (row == 0) {
            convertImage<R, float>(scores, found.pitch(), found.slicePitch(), scores_.data, scores_.pitch,
                                   scores_.slicePitch, size[0], size[1], size[2], RoundMode::HalfUp, stream);
        } else {
            extractMaximumIntensity<R, L>(scores, found.pitch(), found.slicePitch(), static_cast<L>(row), scores_.data,
                                          scores_.pitch, scores_.slicePitch, rows_.data, rows_.pitch, rows_.slicePitch,
                                          size[0], size[1], size[2], stream);
        }
    }

    const DeviceVolume<float>& scores() const { return scores_; }
    const DeviceVolume<L>& rows() const { return rows_; }

private:
    DeviceVolume<float> scores_;
    DeviceVolume<L> rows_;
};

/// Where an output image of type V lies on the device, or the buffer that stands for it.
template <typename V>
DeviceVolume<V> residentOr(ImageModel& output, DeviceImage<V>& buffer) {
    if (!output.isDeviceResident()) {
        const Size3 size = sizeOf(output);
        buffer.resize(size[0], size[1], size[2], true);
        return volumeOf(buffer);
    }
    DeviceVolume<V> volume;
    volume.data = static_cast<V*>(deviceDataPointer(&output, volume.pitch));
    volume.slicePitch = deviceSlicePitch(&output);
    return volume;
}

/// Writes a volume to a part of an output image, wherever that lies.
template <typename V>
void store(const DeviceVolume<V>& volume, ImageModel& output, const Size3& origin, const Size3& size,
           cudaStream_t stream) {
    ImageModelSizeProxy place = partOf(output, origin, size);
    if (output.isDeviceResident()) {
        std::size_t pitch = 0;
        V* const target = static_cast<V*>(deviceDataPointer(&place, pitch));
        copyDeviceVolume<V>(volume.data, volume.pitch, volume.slicePitch, target, pitch, deviceSlicePitch(&place),
                            size[0], size[1], size[2], stream);
    } else {
        copyDeviceToImage3d(volume.data, volume.pitch, volume.slicePitch, place, 0, 0, stream);
    }
}

}  // namespace zel::cuda
