#include "zel/ImageModel.h"

namespace zel {

ImageModel::~ImageModel() = default;

}  // namespace zel
