#include "ImageFiles/Png/PngWriter.h"

#include <bit>
#include <new>
#include <vector>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/Png/PngCalls.h"

namespace zel::tool {

namespace {

void writeBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto* const file = static_cast<AtomicFile*>(png_get_io_ptr(png));
    transferBytes(png, [&] { file->write(bytes, count); });
}

void flushNothing(png_structp /*png*/) {}

class PngWriter {
public:
    explicit PngWriter(AtomicFile& file)
        : file_(file), png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, &failure_, noteError, ignoreWarning)) {
        if (png_ != nullptr) info_ = png_create_info_struct(png_);
        if (info_ == nullptr) {
            png_destroy_write_struct(&png_, nullptr);
            throw std::bad_alloc();
        }
    }
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    void write(const ImageModel& image, const Progress& progress) {
        const ImageSize size = imageSizeOf(image);
        const bool is16Bit = image.getDataType() == VoxelTypes::uint16;
        require(succeeds(png_, [&] {
            png_set_write_fn(png_, &file_, writeBytes, flushNothing);
            png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
            png_set_IHDR(png_, info_, static_cast<png_uint_32>(size.x), static_cast<png_uint_32>(size.y),
                         is16Bit ? 16 : 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                         PNG_FILTER_TYPE_DEFAULT);
            png_write_info(png_, info_);
            if (is16Bit && std::endian::native == std::endian::little) png_set_swap(png_);
        }));
        std::vector<png_byte> row(size.x * helper::getSizeOf(image.getDataType()));
        png_bytep const voxels = row.data();
        const auto writeRow = [&](const RowIndex& index) {
            readWholeRow(image, voxels, index);
            require(succeeds(png_, [=, this] { png_write_row(png_, voxels); }));
        };
        forEachRow(size, writeRow, progress);
        require(succeeds(png_, [this] { png_write_end(png_, nullptr); }));
    }

private:
    void require(bool isDone) const {
        if (isDone) return;
        if (failure_.exception) std::rethrow_exception(failure_.exception);
        throw FileError::writing(file_.path(), failure_.message.data());
    }

    AtomicFile& file_;
    PngFailure failure_;
    png_structp png_;
    png_infop info_ = nullptr;
};

}  // namespace

void writePng(AtomicFile& file, const ImageModel& image, const Progress& progress) {
    PngWriter(file).write(image, progress);
}

}  // namespace zel::tool
