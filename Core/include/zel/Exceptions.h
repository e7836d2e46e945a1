#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "zel/export.h"

namespace zel {

using String = std::string;

/// Base of the failures that carry a message and the place that reports it.
class ZEL_API Exception : public std::exception {
public:
    struct ExceptionInfo {
        String message;
        String file;  ///< source that reports, as a path from the root of the tree
        std::uint64_t line = 0;
        String context{};
        String hint{};
    };

    explicit Exception(ExceptionInfo info);
    ~Exception() override;

    const char* what() const noexcept override { return info_.message.c_str(); }
    const ExceptionInfo& info() const noexcept { return info_; }

private:
    ExceptionInfo info_;
};

/// A failure while an algorithm was at work.
class ZEL_API ProcessingException : public Exception {
public:
    using Exception::Exception;
    ~ProcessingException() override;
};

/// Something that can go wrong in a correct program: bad input, no memory, a device that refuses.
class ZEL_API RuntimeError : public ProcessingException {
public:
    using ProcessingException::ProcessingException;
    ~RuntimeError() override;
};

/// Something that only goes wrong in a faulty program.
class ZEL_API UnexpectedError : public ProcessingException {
public:
    using ProcessingException::ProcessingException;
    ~UnexpectedError() override;
};

/// A run that was cancelled. No failure, so it is no Exception.
class ZEL_API ExceptionCancelation : public std::exception {
public:
    ~ExceptionCancelation() override;
    const char* what() const noexcept override;
};

}  // namespace zel
