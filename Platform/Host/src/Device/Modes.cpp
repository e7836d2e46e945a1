#include "Device/Modes.h"

namespace zel::host {

constinit Modes modes;

}  // namespace zel::host
