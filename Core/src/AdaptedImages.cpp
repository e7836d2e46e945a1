#include "AdaptedImages.h"

namespace zel {

AdaptedImages::AdaptedImages(PropertyReadImage& input, PropertyWriteImage& output)
    : input_(input),
      output_(output),
      givenInput_(input.get()),
      givenOutput_(output.get()),
      inputAsFloat_(givenInput_, VoxelTypes::float32, DataConvertionTypes::cast),
      outputAsFloat_(givenOutput_, VoxelTypes::float32, DataConvertionTypes::cast) {
    input_ = &inputAsFloat_;
    output_ = &outputAsFloat_;
}

AdaptedImages::~AdaptedImages() {
    input_ = givenInput_;
    output_ = givenOutput_;
}

}  // namespace zel
