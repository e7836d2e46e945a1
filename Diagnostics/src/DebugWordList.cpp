#include "diagnostics/DebugWordList.h"

#include <cstring>

namespace zel::diagnostics {

namespace {

std::unique_ptr<char[]> copyOf(const char* word, std::size_t length) {
    auto copy = std::make_unique<char[]>(length + 1);
    std::memcpy(copy.get(), word, length);
    return copy;
}

}  // namespace

DebugWordList::DebugWordList(const char* text) {
    const char* const blank = " ";
    for (text += std::strspn(text, blank); *text != '\0' && count_ < maxCount; text += std::strspn(text, blank)) {
        const std::size_t length = std::strcspn(text, blank);
        words_[static_cast<std::size_t>(count_++)] = copyOf(text, length);
        text += length;
    }
}

void DebugWordList::print(std::FILE* stream) const {
    std::fputs("(", stream);
    for (std::int32_t i = 0; i < count_; ++i) std::fprintf(stream, "%s, ", (*this)[i]);
    std::fputs(")", stream);
}

}  // namespace zel::diagnostics
