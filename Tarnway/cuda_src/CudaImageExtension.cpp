#include "tarnway_cuda/CudaImageExtension.h"

namespace tarnway_cuda {

CudaImageExtension::~CudaImageExtension() = default;

std::shared_ptr<CudaImageExtension> CudaExtensionProvider::cudaImage(const std::shared_ptr<tarnway::ImageView>& view) {
    return std::dynamic_pointer_cast<CudaImageExtension>(view);
}

}  // namespace tarnway_cuda
