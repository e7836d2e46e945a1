#pragma once

#include <gmock/gmock.h>

#include <string>

#include "zel/Exceptions.h"

namespace zel::test {

/// The message of the Error that the action raises; a message of its own when it raises none.
template <typename Error, typename Action>
std::string messageOf(const Action& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "(nothing was raised)";
}

}  // namespace zel::test
