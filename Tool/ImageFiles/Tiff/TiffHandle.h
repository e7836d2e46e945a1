#pragma once

#include <tiffio.h>

#include <array>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "ImageFiles/Common/AtomicFile.h"
#include "ImageFiles/Common/InputFile.h"

namespace zel::tool {

/// Whether a file that begins like this is TIFF: libtiff also opens relatives of it, which are not supported here.
bool isTiff(std::string_view start);

/// libtiff on one of the program's files. Its errors become exceptions; its warnings are ignored, except those about
/// lost voxels, which count as errors.
class TiffHandle {
public:
    /// Opens at the first page.
    /// @throws FileError when the file is not TIFF, is a pipe, or has a damaged first page.
    explicit TiffHandle(InputFile& file);
    /// @param isBig  whether to write BigTIFF, which may be larger than 4 GiB.
    TiffHandle(AtomicFile& file, bool isBig);
    ~TiffHandle() = default;
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    TIFF* get() const { return tiff_.get(); }

    /// Whether libtiff has reported an error since the last check. It may report one and still return success, as when
    /// it fills up missing pixels.
    bool hasErrors() const { return message_[0] != '\0'; }

    /// Call it with the result of each call of libtiff, right after it.
    /// @param what          what was read or written, for the message: "its page 3".
    /// @param silentReason  for the message when libtiff gives no reason.
    /// @throws what the file raised inside of the call, else FileError with libtiff's reason.
    void check(bool hasSucceeded, const std::string& what, std::string_view silentReason = "no reason is known");

private:
    struct CleanUp {
        void operator()(TIFF* tiff) const { TIFFCleanup(tiff); }
    };

    void open(const std::string& path, const char* mode);
    template <typename Result, typename Transfer>
    static Result guarded(thandle_t client, Result failure, const Transfer& transfer);
    std::size_t fileSize() const;

    static tmsize_t readBytes(thandle_t client, void* bytes, tmsize_t count);
    static tmsize_t writeBytes(thandle_t client, void* bytes, tmsize_t count);
    static toff_t seek(thandle_t client, toff_t offset, int whence);
    static toff_t size(thandle_t client);
    static int noteError(TIFF* tiff, void* client, const char* module, const char* format, va_list arguments);
    static int noteWarning(TIFF* tiff, void* client, const char* module, const char* format, va_list arguments);

    InputFile* input_ = nullptr;  // this or output_
    AtomicFile* output_ = nullptr;
    std::size_t position_ = 0;
    std::exception_ptr exception_;         // of the file: none may cross libtiff's C code
    std::array<char, 200> message_{};      // of libtiff, the first since the last check
    std::unique_ptr<TIFF, CleanUp> tiff_;  // last: it may use all of the above to the end
};

}  // namespace zel::tool
