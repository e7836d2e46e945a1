#pragma once

// host_device.h as this library sees it: what it declares is seen from outside.
#pragma GCC visibility push(default)
#include <host_device.h>  // IWYU pragma: export
#pragma GCC visibility pop
