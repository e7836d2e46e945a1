#include "ImageFiles/Tiff/TiffHandle.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <new>
#include <utility>

#include "ImageFiles/Common/FileError.h"

namespace zel::tool {

namespace {

constexpr int isHandled = 1;  // no other handler is called

int closeNothing(thandle_t /*client*/) {
    return 0;
}

int mapNothing(thandle_t /*client*/, void** /*base*/, toff_t* /*size*/) {
    return 0;
}

void unmapNothing(thandle_t /*client*/, void* /*base*/, toff_t /*size*/) {}

}  // namespace

bool isTiff(std::string_view start) {
    using namespace std::string_view_literals;
    const auto magics = {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv};
    return std::ranges::any_of(magics, [=](std::string_view magic) { return start.starts_with(magic); });
}

TiffHandle::TiffHandle(InputFile& file) : input_(&file) {
    if (!file.size()) throw FileError::reading(file.path(), "TIFF is read from files only, not from pipes");
    if (!isTiff(file.peek(4))) throw FileError::reading(file.path(), "it is not a TIFF file");
    // c: strips as they are in the file, not cut into small ones. m: no memory mapping.
    open(file.path(), "rcm");
}

TiffHandle::TiffHandle(AtomicFile& file, bool isBig) : output_(&file) {
    open(file.path(), isBig ? "w8m" : "wm");
}

void TiffHandle::open(const std::string& path, const char* mode) {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                   &TIFFOpenOptionsFree);
    if (options == nullptr) throw std::bad_alloc();
    // A limit for sizes in damaged files. The voxels are not part of this memory.
    constexpr std::size_t maxWorkMemory = std::size_t{256} << 20U;
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(fileSize() + maxWorkMemory));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), noteError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), noteWarning, this);
    tiff_.reset(TIFFClientOpenExt(path.c_str(), mode, this, readBytes, writeBytes, seek, closeNothing, size, mapNothing,
                                  unmapNothing, options.get()));
    check(tiff_ != nullptr, "it");
}

void TiffHandle::check(bool hasSucceeded, const std::string& what, std::string_view silentReason) {
    if (exception_) std::rethrow_exception(exception_);
    std::string reason = std::exchange(message_, {}).data();
    if (hasSucceeded) return;
    if (reason.empty()) reason = silentReason;
    if (output_ != nullptr) throw FileError::writing(output_->path(), reason);
    throw FileError::reading(input_->path(), what + " is damaged: " + reason);
}

template <typename Result, typename Transfer>
Result TiffHandle::guarded(thandle_t client, Result failure, const Transfer& transfer) {
    auto& handle = *static_cast<TiffHandle*>(client);
    try {
        return transfer(handle);
    } catch (...) {
        handle.exception_ = std::current_exception();
        return failure;
    }
}

std::size_t TiffHandle::fileSize() const {
    return input_ != nullptr ? input_->size().value_or(0) : output_->size();
}

tmsize_t TiffHandle::readBytes(thandle_t client, void* bytes, tmsize_t count) {
    return guarded<tmsize_t>(client, -1, [=](TiffHandle& handle) {
        const auto wanted = static_cast<std::size_t>(count);
        const std::size_t got = handle.input_ != nullptr ? handle.input_->readAt(bytes, wanted, handle.position_)
                                                         : handle.output_->readAt(bytes, wanted, handle.position_);
        handle.position_ += got;
        return static_cast<tmsize_t>(got);
    });
}

tmsize_t TiffHandle::writeBytes(thandle_t client, void* bytes, tmsize_t count) {
    return guarded<tmsize_t>(client, -1, [=](TiffHandle& handle) -> tmsize_t {
        if (handle.output_ == nullptr) return -1;
        handle.output_->writeAt(bytes, static_cast<std::size_t>(count), handle.position_);
        handle.position_ += static_cast<std::size_t>(count);
        return count;
    });
}

toff_t TiffHandle::seek(thandle_t client, toff_t offset, int whence) {
    auto& handle = *static_cast<TiffHandle*>(client);
    // Unsigned like libtiff's offsets: a step back is a very large one.
    const std::size_t start = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? handle.position_ : handle.fileSize();
    handle.position_ = start + offset;
    return handle.position_;
}

toff_t TiffHandle::size(thandle_t client) {
    return static_cast<TiffHandle*>(client)->fileSize();
}

/// Where fax and JPEG data end too early, libtiff fills up the picture and only warns.
int TiffHandle::noteWarning(TIFF* tiff, void* client, const char* module, const char* format, va_list arguments) {
    auto& message = static_cast<TiffHandle*>(client)->message_;
    if (message[0] != '\0') return isHandled;
    noteError(tiff, client, module, format, arguments);
    const std::string_view warning(message.data());
    for (const std::string_view loss : {"Premature ", "Line length mismatch", "Corrupt JPEG data"}) {
        if (warning.starts_with(loss)) return isHandled;
    }
    message = {};
    return isHandled;
}

int TiffHandle::noteError(TIFF* /*tiff*/, void* client, const char* /*module*/, const char* format, va_list arguments) {
    auto& message = static_cast<TiffHandle*>(client)->message_;
    if (message[0] != '\0') return isHandled;  // the first one is the cause, others follow from it
    std::vsnprintf(message.data(), message.size(), format, arguments);
    // It may quote bytes of the file, and a message is one line.
    std::ranges::replace_if(
        message, [](char c) { return c != '\0' && std::isprint(static_cast<unsigned char>(c)) == 0; }, '?');
    return isHandled;
}

}  // namespace zel::tool
