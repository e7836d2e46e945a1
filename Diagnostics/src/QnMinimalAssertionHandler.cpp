#include "diagnostics/QnMinimalAssertionHandler.h"

#include <cstdio>

namespace zel::diagnostics {

namespace {

/// @param outcome  what stands behind the condition.
std::int32_t report(std::int32_t value, const char* kind, const char* condition, const char* outcome, const char* file,
                    std::int32_t line) {
    std::fprintf(stderr, "%s %s%s, file %s, line %d\n", kind, condition, outcome, file, line);
    return value;
}

}  // namespace

QnMinimalAssertionHandler::~QnMinimalAssertionHandler() = default;

std::int32_t QnMinimalAssertionHandler::assertionFailed(std::int32_t value, const char* condition, const char* file,
                                                        std::int32_t line) {
    return report(value, "Assertion", condition, " failed", file, line);
}

std::int32_t QnMinimalAssertionHandler::requireFailed(std::int32_t value, const char* condition, const char* file,
                                                      std::int32_t line) {
    return report(value, "Require", condition, " failed", file, line);
}

std::int32_t QnMinimalAssertionHandler::ensureFailed(std::int32_t value, const char* condition, const char* file,
                                                     std::int32_t line) {
    return report(value, "Ensure", condition, " failed", file, line);
}

std::int32_t QnMinimalAssertionHandler::criticalError(std::int32_t value, const char* condition, const char* file,
                                                      std::int32_t line) {
    return report(value, "Critical Error", condition, "", file, line);
}

}  // namespace zel::diagnostics
