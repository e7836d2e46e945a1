#include "zel/InteractionInterface.h"

namespace zel {

InteractionInterface::~InteractionInterface() = default;

}  // namespace zel
