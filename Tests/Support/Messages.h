#pragma once

#include <gmock/gmock.h>

#include <string>

#include "zel/Exceptions.h"

namespace zel::test {

/// The message of the error that the action raises; one of its own when it raises none.
template <typename Error = RuntimeError, typename Action>
std::string messageOf(const Action& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "(nothing was raised)";
}

}  // namespace zel::test
