#pragma once

#include <cstdint>

namespace zel::diagnostics {

/// Is told about violated conditions. Each operation that is told one gets a value for whoever reports it, the text of
/// the condition, and where it stands; it returns what the reporter goes on with.
class QnAssertionHandler {
public:
    QnAssertionHandler(const QnAssertionHandler&) = delete;
    QnAssertionHandler& operator=(const QnAssertionHandler&) = delete;
    virtual ~QnAssertionHandler() = default;

    virtual std::int32_t assertionFailed(std::int32_t value, const char* condition, const char* file,
                                         std::int32_t line) = 0;
    virtual std::int32_t requireFailed(std::int32_t value, const char* condition, const char* file,
                                       std::int32_t line) = 0;
    virtual std::int32_t ensureFailed(std::int32_t value, const char* condition, const char* file,
                                      std::int32_t line) = 0;
    virtual std::int32_t criticalError(std::int32_t value, const char* condition, const char* file,
                                       std::int32_t line) = 0;

    // Places in the table of operations that nothing uses.
    virtual void unused1() = 0;
    virtual void unused2() = 0;
    virtual void unused3() = 0;

protected:
    QnAssertionHandler() = default;
};

}  // namespace zel::diagnostics
