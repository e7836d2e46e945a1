#pragma once

/// The vendor's runtime on the CPU: the same names, contracts and codes, as far as this system uses them.

#include "host_runtime/Calls.h"
#include "host_runtime/Kernel.h"
#include "host_runtime/Launch.h"
#include "host_runtime/Types.h"
