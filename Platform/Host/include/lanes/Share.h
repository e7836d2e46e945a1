#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "BlockNumber.h"

namespace zel::cuda {

/// One of `shares` parts of `count` pieces of work: neighbours, since threads of the host do not share cache lines.
/// Where there are more shares than pieces, the empty ones lie between the others, for threads take neighbouring
/// shares.
struct Share {
    std::uint64_t begin, end;

    Share(std::uint64_t count, std::uint64_t share, std::uint64_t shares) {
        const std::uint64_t each = count / shares;
        const std::uint64_t rest = count % shares;
        const auto firstOf = [=](std::uint64_t number) { return each * number + rest * number / shares; };
        begin = firstOf(share);
        end = firstOf(share + 1);
    }
};

/// The block's share of the work of its launch.
inline Share blockShare(std::uint64_t count) {
    return {count, blockNumber(), blockCount()};
}

/// This call's share of the work of a launch whose pieces are independent. A launch of few blocks calls its kernel
/// several times for each block, on several threads, when it learns by this that the kernel shares its work so. Hence
/// such a kernel says all of its work by words that do, and has no barrier.
inline Share callShare(std::uint64_t count) {
    host::BlockPart& part = host::blockPart;
    part.taken = true;
    return {count, blockNumber() * part.count + part.index, blockCount() * part.count};
}

}  // namespace zel::cuda
