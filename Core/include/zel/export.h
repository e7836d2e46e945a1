#pragma once

/// Marks what the core offers to others: everything else in its shared library is hidden.
#define ZEL_API __attribute__((visibility("default")))
