#include <png.h>

#include <algorithm>
#include <array>
#include <bit>
#include <csetjmp>
#include <exception>
#include <vector>

#include "ImageFiles/FileError.h"
#include "ImageFiles/ImageFormat.h"
#include "ImageFiles/Rows.h"

namespace zel::tool {

namespace {

/// What a callback of libpng leaves for the C++ side, since no exception may cross libpng's C code.
struct PngFailure {
    std::exception_ptr exception;     // of the file
    std::array<char, 128> message{};  // of libpng
};

void noteError(png_structp png, png_const_charp message) {
    auto* const failure = static_cast<PngFailure*>(png_get_error_ptr(png));
    const std::string_view text(message);
    const std::size_t length = std::min(text.size(), failure->message.size() - 1);
    std::copy_n(text.begin(), length, failure->message.begin());
    failure->message[length] = '\0';
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp /*png*/, png_const_charp /*message*/) {}

/// True when the transfer succeeded, else the exception is in the failure.
template <typename Transfer>
bool transferBytes(png_structp png, const Transfer& transfer) {
    try {
        transfer();
        return true;
    } catch (...) {
        static_cast<PngFailure*>(png_get_error_ptr(png))->exception = std::current_exception();
        return false;
    }
}

void readBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto* const file = static_cast<InputFile*>(png_get_io_ptr(png));
    const bool isDone = transferBytes(png, [&] {
        if (file->read(bytes, count) < count) throw FileError::reading(file->path(), "its end is missing");
    });
    if (!isDone) png_error(png, "");
}

void writeBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto* const file = static_cast<AtomicFile*>(png_get_io_ptr(png));
    if (!transferBytes(png, [&] { file->write(bytes, count); })) png_error(png, "");
}

void flushNothing(png_structp /*png*/) {}

/// Runs calls of libpng; false when one of them failed. libpng leaves by longjmp, past the body's frame, so no object
/// with a destructor may live in there.
template <typename Body>
bool succeeds(png_structp png, const Body& body) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT(cert-err52-cpp): libpng knows no other way
    body();
    return true;
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

    void write(const ImageModel& image) {
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
        forEachRow(size, [&](const RowIndex& index) {
            readWholeRow(image, voxels, index);
            require(succeeds(png_, [=, this] { png_write_row(png_, voxels); }));
        });
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

class PngFormat final : public ImageFormat {
public:
    std::string_view name() const override { return "PNG"; }
    std::vector<std::string_view> extensions() const override { return {".png"}; }

    HostImage read(InputFile& file) const override { return PngReader(file).read(); }

    std::string whyNotWritable(VoxelTypes type, const ImageSize& size) const override {
        if (type != VoxelTypes::uint8 && type != VoxelTypes::uint16) {
            return "PNG holds uint8 and uint16, the image is " + std::string(voxelTypeName(type)) +
                   "; write .npy, or make it fit with zel convert --type uint8";
        }
        if (size.z != 1 || size.i3 != 1 || size.i4 != 1) {
            return "PNG holds one slice, the image has " + std::to_string(size.z * size.i3 * size.i4) + "; write .npy";
        }
        if (std::max(size.x, size.y) > PNG_UINT_31_MAX) return "PNG holds at most 2147483647 voxels along an axis";
        return {};
    }

    void write(AtomicFile& file, const ImageModel& image) const override { PngWriter(file).write(image); }
};

}  // namespace

const ImageFormat& pngFormat() {
    static const PngFormat format;
    return format;
}

}  // namespace zel::tool
