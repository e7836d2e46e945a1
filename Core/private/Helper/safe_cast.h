#pragma once

#include <type_traits>
#include <typeinfo>

#include "Helper/raise.h"

namespace zel {

/// dynamic_cast of a pointer to an object that has to be of the target's class.
/// @throws UnexpectedError when it is not, or when there is no object.
template <typename To, typename From>
To safe_cast(From* object) {
    static_assert(std::is_pointer_v<To>, "safe_cast casts pointers");
    To const result = dynamic_cast<To>(object);
    if (result == nullptr) {
        raise<UnexpectedError>("Core/private/Helper/safe_cast", __LINE__, "bad cast when casting ",
                               typeid(From*).name(), " into ", typeid(To).name());
    }
    return result;
}

}  // namespace zel
