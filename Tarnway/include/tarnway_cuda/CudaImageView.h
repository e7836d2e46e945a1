#pragma once

#include <memory>

#include "tarnway_cuda/CudaImageExtension.h"

namespace tarnway_cuda {

/// A view of an image in the memory of a GPU, rows padded as the runtime likes them or as the caller has them. Rows are
/// copied one by one, from several threads if need be.
class TARNWAY_API CudaImageView : public tarnway::ImageView, public CudaImageExtension {
public:
    /// Memory of its own on the calling thread's current GPU; its contents are undefined at first. A depth of 1 gives a
    /// view of two dimensions.
    /// @throws std::invalid_argument when the bytes cannot be counted, std::bad_alloc when they cannot be had.
    static std::shared_ptr<CudaImageView> allocate(tarnway::ElementType type, std::size_t width, std::size_t height,
                                                   std::size_t depth = 1);

    /// The same with any dimensions.
    static std::shared_ptr<CudaImageView> allocate(const tarnway::ImageInfoProperty& info);

    /// Shows memory of the caller, which has to outlive the view. Where the GPU reads the host's memory
    /// (cudaDevAttrPageableMemoryAccess), that can be the host's.
    /// @param deviceAddress  of the first element, a multiple of the element's size.
    /// @param rowPitchBytes  from row to row: a multiple of the element's size, at least a row. Slices follow after
    ///                       height rows.
    /// @throws std::invalid_argument for any other address or pitch, or when the bytes cannot be counted.
    static std::shared_ptr<CudaImageView> wrap(const tarnway::ImageInfoProperty& info, void* deviceAddress,
                                               std::size_t rowPitchBytes);

    /// The same for elements without gaps; a depth of 1 gives a view of two dimensions.
    static std::shared_ptr<CudaImageView> wrap(tarnway::ElementType type, std::size_t width, std::size_t height,
                                               std::size_t depth, void* deviceAddress);

    ~CudaImageView() override;

    const tarnway::ImageProperties& imageProperties() const override { return properties_; }
    bool isOnDevice() const override { return true; }
    bool readRow(std::size_t count, void* buffer, const tarnway::VectorX<std::size_t>& index) const override;
    bool writeRow(std::size_t count, const void* buffer, const tarnway::VectorX<std::size_t>& index) override;
    const void* storage() const override { return data_.get(); }

    const tarnway::Indexer& indexer() const override { return indexer_; }
    void* deviceData() override { return data_.get(); }
    const void* deviceDataReadOnly() const override { return data_.get(); }

private:
    CudaImageView(const tarnway::ImageInfoProperty& info, std::shared_ptr<void> data, std::size_t rowPitchBytes);

    bool contains(std::size_t count, const tarnway::VectorX<std::size_t>& index) const;

    tarnway::ImageProperties properties_;
    tarnway::Indexer indexer_;
    std::shared_ptr<void> data_;
};

}  // namespace tarnway_cuda
