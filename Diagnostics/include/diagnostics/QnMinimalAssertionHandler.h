#pragma once

#include "diagnostics/QnAssertionHandler.h"

namespace zel::diagnostics {

/// Prints one line to standard error for each violated condition and lets the reporter go on with its value.
class QnMinimalAssertionHandler final : public QnAssertionHandler {
public:
    ~QnMinimalAssertionHandler() override;

    std::int32_t assertionFailed(std::int32_t value, const char* condition, const char* file,
                                 std::int32_t line) override;
    std::int32_t requireFailed(std::int32_t value, const char* condition, const char* file, std::int32_t line) override;
    std::int32_t ensureFailed(std::int32_t value, const char* condition, const char* file, std::int32_t line) override;
    std::int32_t criticalError(std::int32_t value, const char* condition, const char* file, std::int32_t line) override;

    void unused1() override {}
    void unused2() override {}
    void unused3() override {}
};

}  // namespace zel::diagnostics
