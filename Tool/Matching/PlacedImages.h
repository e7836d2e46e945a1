#pragma once

#include <cstdint>
#include <memory>

#include "Runs/RunOptions.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Input and outputs of a matching in the memory that the options ask for.
class PlacedImages {
public:
    /// @throws std::runtime_error when the device has not enough memory.
    PlacedImages(Placement placement, const ImageModel& input, ImageModel& score, ImageModel& index);

    const ImageModel& input() const { return deviceInput_ ? *deviceInput_ : input_; }
    ImageModel& score() const { return deviceScore_ ? *deviceScore_ : score_; }
    ImageModel& index() const { return deviceIndex_ ? *deviceIndex_ : index_; }
    /// Bytes of those that lie on the device.
    std::uint64_t deviceBytes() const;
    /// Brings the outputs to the host where they are not there.
    void copyResults(ImageModel& score, ImageModel& index) const;

private:
    const ImageModel& input_;
    ImageModel& score_;
    ImageModel& index_;
    std::unique_ptr<ImageModel> deviceInput_;
    std::unique_ptr<ImageModel> deviceScore_;
    std::unique_ptr<ImageModel> deviceIndex_;
};

}  // namespace zel::tool
