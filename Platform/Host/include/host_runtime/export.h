#pragma once

/// Marks what the host device's shared library offers to the outside.
#define ZEL_HOST_API __attribute__((visibility("default")))
