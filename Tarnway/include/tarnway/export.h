#pragma once

/// Marks what tarnway and tarnway_cuda offer to others.
#define TARNWAY_API __attribute__((visibility("default")))
