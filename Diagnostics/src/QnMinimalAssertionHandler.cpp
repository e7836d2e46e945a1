#include "diagnostics/QnMinimalAssertionHandler.h"

#include <cstdio>

namespace zel::diagnostics {

QnMinimalAssertionHandler::~QnMinimalAssertionHandler() = default;

std::int32_t QnMinimalAssertionHandler::assertionFailed(std::int32_t value, const char* condition, const char* file,
                                                        std::int32_t line) {
    std::fprintf(stderr, "Assertion %s failed, file %s, line %d\n", condition, file, line);
    return value;
}

std::int32_t QnMinimalAssertionHandler::requireFailed(std::int32_t value, const char* condition, const char* file,
                                                      std::int32_t line) {
    std::fprintf(stderr, "Require %s failed, file %s, line %d\n", condition, file, line);
    return value;
}

std::int32_t QnMinimalAssertionHandler::ensureFailed(std::int32_t value, const char* condition, const char* file,
                                                     std::int32_t line) {
    std::fprintf(stderr, "Ensure %s failed, file %s, line %d\n", condition, file, line);
    return value;
}

std::int32_t QnMinimalAssertionHandler::criticalError(std::int32_t value, const char* condition, const char* file,
                                                      std::int32_t line) {
    std::fprintf(stderr, "Critical Error %s, file %s, line %d\n", condition, file, line);
    return value;
}

}  // namespace zel::diagnostics
