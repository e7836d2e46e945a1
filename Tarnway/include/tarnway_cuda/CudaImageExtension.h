#pragma once

#include <memory>

#include "tarnway/ImageView.h"
#include "tarnway/Indexer.h"

namespace tarnway_cuda {

/// What a view of an image on a GPU can tell beyond a view.
class TARNWAY_API CudaImageExtension {
public:
    virtual ~CudaImageExtension();

    virtual const tarnway::Indexer& indexer() const = 0;
    /// Device address of the first element.
    virtual void* deviceData() = 0;
    virtual const void* deviceDataReadOnly() const = 0;
};

/// Finds the GPU extension of a view.
class TARNWAY_API CudaExtensionProvider {
public:
    /// Null when the view does not show an image on a GPU. The extension keeps the view alive.
    static std::shared_ptr<CudaImageExtension> cudaImage(const std::shared_ptr<tarnway::ImageView>& view);
};

}  // namespace tarnway_cuda
