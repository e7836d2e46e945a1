#pragma once

#include <png.h>

#include <array>
#include <csetjmp>
#include <exception>

namespace zel::tool {

/// What a callback of libpng leaves for the C++ side, since no exception may cross libpng's C code.
struct PngFailure {
    std::exception_ptr exception;     ///< of the file
    std::array<char, 128> message{};  ///< of libpng
};

/// libpng's callbacks for errors and warnings; its error pointer is a PngFailure.
void noteError(png_structp png, png_const_charp message);
void ignoreWarning(png_structp png, png_const_charp message);

/// Reads or writes bytes for a callback of libpng: calls transfer(), and hands its exception over as an error of
/// libpng.
template <typename Transfer>
void transferBytes(png_structp png, const Transfer& transfer) {
    bool isDone = false;
    try {
        transfer();
        isDone = true;
    } catch (...) {
        static_cast<PngFailure*>(png_get_error_ptr(png))->exception = std::current_exception();
    }
    if (!isDone) png_error(png, "");  // not from inside the handler, which it leaves by longjmp
}

/// Runs calls of libpng; false when one of them failed. libpng leaves by longjmp, past the body's frame, so no object
/// with a destructor may live in there.
template <typename Body>
bool succeeds(png_structp png, const Body& body) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT(cert-err52-cpp): libpng knows no other way
    body();
    return true;
}

}  // namespace zel::tool
