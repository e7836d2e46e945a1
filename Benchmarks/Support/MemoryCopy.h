#pragma once

#include "Comparison.h"

namespace zel::bench {

/// A memcpy on two threads, half each, between memory that exists and was touched: the rate that the machine's memory
/// allows a copy.
/// @param bytes  read and written together, so half of them are copied.
Peer memoryCopyPeer(double bytes);

/// A sum over so many bytes in the same way: the rate at which the machine reads.
Peer memoryReadPeer(double bytes);

/// A memset of so many bytes in the same way: where it falls behind the copy, so does any other fill.
Contender memoryFill(double bytes);

}  // namespace zel::bench
