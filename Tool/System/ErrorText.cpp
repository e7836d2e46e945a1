#include "System/ErrorText.h"

#include <cctype>
#include <cstring>

namespace zel::tool {

std::string systemErrorText(int errorNumber) {
    std::string text = std::strerror(errorNumber);  // NOLINT(concurrency-mt-unsafe): called on one thread
    if (!text.empty()) text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

}  // namespace zel::tool
