#include "zel/SafeObject.h"

namespace zel {

SafeObject::SafeObject() = default;
SafeObject::~SafeObject() = default;

}  // namespace zel
