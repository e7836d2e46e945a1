#pragma once

#include "zel/export.h"

namespace zel {

/// Base of scope guards: made once, never copied, undone when destroyed.
class ZEL_API SafeObject {
public:
    SafeObject(const SafeObject&) = delete;
    SafeObject& operator=(const SafeObject&) = delete;
    virtual ~SafeObject();

protected:
    SafeObject();
};

}  // namespace zel
