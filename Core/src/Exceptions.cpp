#include "zel/Exceptions.h"

#include <utility>

namespace zel {

Exception::Exception(ExceptionInfo info) : info_(std::move(info)) {}

// The destructors are here so that each class has one home, and a catch finds it across libraries.
Exception::~Exception() = default;
ProcessingException::~ProcessingException() = default;
RuntimeError::~RuntimeError() = default;
UnexpectedError::~UnexpectedError() = default;
ExceptionCancelation::~ExceptionCancelation() = default;

const char* ExceptionCancelation::what() const noexcept {
    return "the run was cancelled";
}

}  // namespace zel
