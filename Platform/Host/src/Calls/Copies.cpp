#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

#include "Calls/RuntimeCall.h"
#include "Device/Streams.h"
#include "host_runtime/Parallel.h"

namespace zel::host {
namespace {

/// Rows of rows of bytes in memory.
struct Side {
    std::byte* first;
    std::size_t pitch, slicePitch;
};

struct CopyShape {
    std::size_t width;  ///< bytes
    std::size_t height, depth;

    bool isEmpty() const { return width == 0 || height == 0 || depth == 0; }
    /// From the first byte of a side to behind its last one: the padding of the last row is no part of it. All ones
    /// where that is more than any memory.
    std::size_t span(const Side& side) const {
        using Wide = unsigned __int128;
        constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
        const Wide bytes = Wide{depth - 1} * side.slicePitch + Wide{height - 1} * side.pitch + width;
        return bytes < most ? static_cast<std::size_t>(bytes) : most;
    }
};

struct Copy {
    Side dst, src;
    CopyShape shape;

    /// Takes rows, then slices, that follow each other on both sides as one.
    void collapse() {
        const auto slicesFollow = [&](const Side& side) { return side.slicePitch == shape.height * side.pitch; };
        if (slicesFollow(dst) && slicesFollow(src)) {
            shape.height *= shape.depth;
            shape.depth = 1;
        }
        if (shape.depth == 1 && dst.pitch == shape.width && src.pitch == shape.width) {
            shape.width *= shape.height;
            shape.height = 1;
        }
    }
    void run() const;
};

constexpr std::size_t pieceBytes = std::size_t{64} << 10;
/// Below, other threads do not make up for the cost of handing work to them.
constexpr std::size_t parallelFrom = std::size_t{128} << 10;

void Copy::run() const {
    const std::size_t piecesPerRow = (shape.width + pieceBytes - 1) / pieceBytes;
    const std::size_t pieces = shape.depth * shape.height * piecesPerRow;
    const std::size_t pieceWidth = std::min(shape.width, pieceBytes);
    const auto copyPieces = [&](std::size_t begin, std::size_t end) {
        for (std::size_t piece = begin; piece != end; ++piece) {
            const std::size_t row = piece / piecesPerRow;
            const std::size_t x = piece % piecesPerRow * pieceWidth;
            const std::size_t z = row / shape.height;
            const std::size_t y = row % shape.height;
            std::memcpy(dst.first + z * dst.slicePitch + y * dst.pitch + x,
                        src.first + z * src.slicePitch + y * src.pitch + x, std::min(pieceWidth, shape.width - x));
        }
    };
    if (shape.width * shape.height * shape.depth < parallelFrom) return copyPieces(0, pieces);
    parallelFor(pieces, std::max<std::size_t>(1, pieceBytes / pieceWidth), copyPieces);
}

enum class Place { host, device, any };

/// Whether a side lies where the copy's kind says. Host memory is taken on trust, unless it is a device's; where the
/// device uses it in place, it is as good as the device's own.
bool isAt(Place place, const Side& side, const CopyShape& shape) {
    if (side.first == nullptr) return false;
    const bool startsOnDevice = isDeviceRange(side.first, 1);
    if (place == Place::host || (place == Place::any && !startsOnDevice)) return !startsOnDevice;
    return isReachable(side.first, shape.span(side));
}

cudaError_t checkCopy(const Copy& copy, cudaMemcpyKind kind, cudaStream_t stream) {
    static constexpr struct {
        Place src, dst;
    } places[] = {{Place::host, Place::host},
                  {Place::host, Place::device},
                  {Place::device, Place::host},
                  {Place::device, Place::device},
                  {Place::any, Place::any}};
    if (static_cast<unsigned int>(kind) >= std::size(places)) return cudaErrorInvalidMemcpyDirection;
    if (!isStream(stream)) return cudaErrorInvalidResourceHandle;
    if (copy.shape.isEmpty()) return cudaSuccess;
    if (copy.dst.pitch < copy.shape.width || copy.src.pitch < copy.shape.width) return cudaErrorInvalidValue;
    const bool right = isAt(places[kind].src, copy.src, copy.shape) && isAt(places[kind].dst, copy.dst, copy.shape);
    return right ? cudaSuccess : cudaErrorInvalidValue;
}

/// Deferred work reads and writes host memory only when it runs, so that a caller who reuses the memory too early is
/// found out.
cudaError_t startCopy(Copy copy, cudaMemcpyKind kind, cudaStream_t stream) {
    if (const cudaError_t status = checkCopy(copy, kind, stream); status != cudaSuccess) return status;
    if (copy.shape.isEmpty()) return cudaSuccess;
    copy.collapse();
    submit(stream, [copy] { copy.run(); });
    return cudaSuccess;
}

Side flatSide(const void* first, std::size_t pitch, std::size_t height) {
    return {static_cast<std::byte*>(const_cast<void*>(first)), pitch, pitch * height};
}

Side sideAt(const cudaPitchedPtr& memory, const cudaPos& position) {
    const std::size_t slicePitch = memory.pitch * memory.ysize;
    auto* const first = static_cast<std::byte*>(memory.ptr);
    return {first == nullptr ? first : first + position.z * slicePitch + position.y * memory.pitch + position.x,
            memory.pitch, slicePitch};
}

bool rowsFit(const cudaPitchedPtr& memory, const cudaPos& position, const cudaExtent& extent) {
    const bool fits = extent.height <= memory.ysize && position.y <= memory.ysize - extent.height;
    return extent.depth <= 1 || fits;
}

Copy linearCopy(void* dst, const void* src, std::size_t bytes) {
    return {flatSide(dst, bytes, 1), flatSide(src, bytes, 1), {bytes, 1, 1}};
}

void fill(std::byte* first, int value, std::size_t bytes) {
    parallelFor((bytes + pieceBytes - 1) / pieceBytes, 1, [&](std::size_t begin, std::size_t end) {
        const std::size_t offset = begin * pieceBytes;
        std::memset(first + offset, value, std::min(bytes, end * pieceBytes) - offset);
    });
}

}  // namespace
}  // namespace zel::host

using namespace zel::host;

cudaError_t cudaMemcpy(void* dst, const void* src, std::size_t bytes, cudaMemcpyKind kind) {
    return deviceCall("cudaMemcpy", [&] {
        const cudaError_t status = startCopy(linearCopy(dst, src, bytes), kind, nullptr);
        return status == cudaSuccess ? synchronizeStream(streamOf(nullptr)) : status;
    });
}

cudaError_t cudaMemcpyAsync(void* dst, const void* src, std::size_t bytes, cudaMemcpyKind kind, cudaStream_t stream) {
    return deviceCall("cudaMemcpyAsync", [&] { return startCopy(linearCopy(dst, src, bytes), kind, stream); });
}

cudaError_t cudaMemcpy2DAsync(void* dst, std::size_t dstPitch, const void* src, std::size_t srcPitch,
                              std::size_t widthBytes, std::size_t height, cudaMemcpyKind kind, cudaStream_t stream) {
    return deviceCall("cudaMemcpy2DAsync", [&] {
        const Copy copy{flatSide(dst, dstPitch, height), flatSide(src, srcPitch, height), {widthBytes, height, 1}};
        return startCopy(copy, kind, stream);
    });
}

cudaError_t cudaMemcpy3DAsync(const cudaMemcpy3DParms* parameters, cudaStream_t stream) {
    return deviceCall("cudaMemcpy3DAsync", [&] {
        if (parameters == nullptr) return cudaErrorInvalidValue;
        const cudaMemcpy3DParms& p = *parameters;
        const bool known = p.srcArray == nullptr && p.dstArray == nullptr && rowsFit(p.srcPtr, p.srcPos, p.extent) &&
                           rowsFit(p.dstPtr, p.dstPos, p.extent);
        if (!known) return cudaErrorInvalidValue;
        const Copy copy{
            sideAt(p.dstPtr, p.dstPos), sideAt(p.srcPtr, p.srcPos), {p.extent.width, p.extent.height, p.extent.depth}};
        return startCopy(copy, p.kind, stream);
    });
}

cudaError_t cudaMemsetAsync(void* address, int value, std::size_t bytes, cudaStream_t stream) {
    return deviceCall("cudaMemsetAsync", [&] {
        if (!isStream(stream)) return cudaErrorInvalidResourceHandle;
        if (bytes == 0) return cudaSuccess;
        if (!isReachable(address, bytes)) return cudaErrorInvalidValue;
        submit(stream, [=] { fill(static_cast<std::byte*>(address), value, bytes); });
        return cudaSuccess;
    });
}
