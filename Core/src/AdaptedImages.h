#pragma once

#include <memory>

#include "zel/ImageModelAdapter.h"
#include "zel/Property.h"

namespace zel {

/// While it lives, an algorithm's input and output images are seen as float32; then the properties are as before.
class AdaptedImages {
public:
    AdaptedImages(PropertyReadImage& input, PropertyWriteImage& output);
    ~AdaptedImages();
    AdaptedImages(const AdaptedImages&) = delete;
    AdaptedImages& operator=(const AdaptedImages&) = delete;

private:
    PropertyReadImage& input_;
    PropertyWriteImage& output_;
    const ImageModel* const givenInput_;
    ImageModel* const givenOutput_;
    ImageModelAdapter inputAsFloat_;
    ImageModelAdapter outputAsFloat_;
};

/// The images of an algorithm as float32 when the input's type is one of those that go through it; else nothing.
template <typename... T>
std::unique_ptr<AdaptedImages> adaptImagesOf(TypeList<T...>, PropertyReadImage& input, PropertyWriteImage& output) {
    const VoxelTypes type = input.get()->getDataType();
    if (!((type == voxelTypeOf<T>) || ...)) return nullptr;
    return std::make_unique<AdaptedImages>(input, output);
}

}  // namespace zel
