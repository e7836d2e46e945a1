#pragma once

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

}  // namespace zel
