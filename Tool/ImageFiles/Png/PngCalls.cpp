#include "ImageFiles/Png/PngCalls.h"

#include <algorithm>
#include <string_view>

namespace zel::tool {

void noteError(png_structp png, png_const_charp message) {
    auto* const failure = static_cast<PngFailure*>(png_get_error_ptr(png));
    const std::string_view text(message);
    const std::size_t length = std::min(text.size(), failure->message.size() - 1);
    std::copy_n(text.begin(), length, failure->message.begin());
    failure->message[length] = '\0';
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp /*png*/, png_const_charp /*message*/) {}

}  // namespace zel::tool
