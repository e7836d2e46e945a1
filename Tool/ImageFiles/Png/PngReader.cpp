#include "ImageFiles/Png/PngReader.h"

#include <bit>
#include <new>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Png/PngCalls.h"

namespace zel::tool {

namespace {

void readBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto* const file = static_cast<InputFile*>(png_get_io_ptr(png));
    transferBytes(png, [&] { file->readExactly(bytes, count); });
}

class PngReader {
public:
    explicit PngReader(InputFile& file)
        : file_(file), png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, &failure_, noteError, ignoreWarning)) {
        if (png_ != nullptr) info_ = png_create_info_struct(png_);
        if (info_ == nullptr) {
            png_destroy_read_struct(&png_, nullptr, nullptr);
            throw std::bad_alloc();
        }
    }
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    HostImage read() {
        readHeader();
        const ImageSize size{png_get_image_width(png_, info_), png_get_image_height(png_, info_)};
        const bool is16Bit = png_get_bit_depth(png_, info_) == 16;
        file_.requireMemory(static_cast<unsigned long long>(size.x) * size.y * (is16Bit ? 2 : 1));
        HostImage image(is16Bit ? VoxelTypes::uint16 : VoxelTypes::uint8, size);
        readRows(static_cast<png_bytep>(image.data()), image.rowPitchBytes(), size.y);
        return image;
    }

private:
    void readHeader() {
        constexpr std::size_t signatureSize = 8;
        std::array<png_byte, signatureSize> signature{};
        const std::size_t got = file_.read(signature.data(), signature.size());
        if (got == 0 || png_sig_cmp(signature.data(), 0, got) != 0) {
            throw FileError::reading(file_.path(), "it is not a PNG file");
        }
        if (got < signatureSize) throw FileError::reading(file_.path(), "its end is missing");
        require(succeeds(png_, [this] {
            png_set_read_fn(png_, &file_, readBytes);
            png_set_sig_bytes(png_, signatureSize);
            png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
            png_read_info(png_, info_);
        }));

        const int colours = png_get_color_type(png_, info_);
        const bool isTransparent =
            (colours & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
        if ((colours & PNG_COLOR_MASK_COLOR) != 0) refuse(colours == PNG_COLOR_TYPE_PALETTE ? "a palette" : "colours");
        if (isTransparent) refuse("transparency");
    }

    void readRows(png_bytep voxels, std::size_t pitchBytes, std::size_t height) {
        require(succeeds(png_, [=, this] {
            png_set_expand_gray_1_2_4_to_8(png_);
            if (std::endian::native == std::endian::little) png_set_swap(png_);  // PNG's 16-bit voxels are big endian
            const int passes = png_set_interlace_handling(png_);
            png_read_update_info(png_, info_);
            for (int pass = 0; pass < passes; ++pass) {
                for (std::size_t y = 0; y < height; ++y) png_read_row(png_, voxels + y * pitchBytes, nullptr);
            }
            png_read_end(png_, nullptr);
        }));
    }

    [[noreturn]] void refuse(const char* what) const {
        throw FileError::reading(file_.path(), std::string("it has ") + what +
                                                   "; only grey pictures can be read, so convert it to grey first, as "
                                                   "most picture programs can");
    }

    void require(bool isDone) const {
        if (isDone) return;
        if (failure_.exception) std::rethrow_exception(failure_.exception);
        throw FileError::reading(file_.path(), std::string("it is damaged: ") + failure_.message.data());
    }

    InputFile& file_;
    PngFailure failure_;
    png_structp png_;
    png_infop info_ = nullptr;
};

}  // namespace

HostImage readPng(InputFile& file) {
    return PngReader(file).read();
}

}  // namespace zel::tool
