#pragma once

namespace zel::host {

/// The status of a failed call of the runtime that still stands, or 0.
int stickyError();
void clearStickyError();

}  // namespace zel::host
