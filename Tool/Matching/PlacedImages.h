#pragma once

#include <cstdint>
#include <memory>

#include "Runs/Place.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Input and outputs of a matching in their place.
class PlacedImages {
public:
    /// @throws std::runtime_error when the device has not enough memory.
    PlacedImages(Place place, const ImageModel& input, ImageModel& score, ImageModel& index);

    const ImageModel& input() const { return placedInput_ ? *placedInput_ : input_; }
    ImageModel& score() const { return placedScore_ ? *placedScore_ : score_; }
    ImageModel& index() const { return placedIndex_ ? *placedIndex_ : index_; }
    /// Bytes of copies on the device.
    std::uint64_t deviceBytes() const;
    /// Brings the outputs to the host where they are not there.
    void copyResults(ImageModel& score, ImageModel& index) const;

private:
    const Place place_;
    const ImageModel& input_;
    ImageModel& score_;
    ImageModel& index_;
    std::unique_ptr<ImageModel> placedInput_;  // none where an image is used as it is
    std::unique_ptr<ImageModel> placedScore_;
    std::unique_ptr<ImageModel> placedIndex_;
};

}  // namespace zel::tool
