#include "Npp/Common/FilterArguments.h"

#include <cstdint>

#include "Device/Allocations.h"

namespace zel::host {
namespace {

bool isEmpty(NppiSize size) {
    return size.width <= 0 || size.height <= 0;
}

bool isInside(NppiPoint point, NppiSize size) {
    return point.x >= 0 && point.y >= 0 && point.x < size.width && point.y < size.height;
}

NppStatus checkImage(const void* pixels, int step, NppiSize size, std::size_t pixelBytes) {
    if (step <= 0) return NPP_STEP_ERROR;
    if (static_cast<std::size_t>(step) % pixelBytes != 0) return NPP_NOT_EVEN_STEP_ERROR;
    if (static_cast<std::size_t>(step) < static_cast<std::size_t>(size.width) * pixelBytes) return NPP_STRIDE_ERROR;
    if (reinterpret_cast<std::uintptr_t>(pixels) % pixelBytes != 0) return NPP_ALIGNMENT_ERROR;
    return NPP_SUCCESS;
}

bool liesOnDevice(const void* pixels, int step, NppiSize size, std::size_t pixelBytes) {
    const std::size_t lastRow = static_cast<std::size_t>(size.height - 1) * static_cast<std::size_t>(step);
    return isReachable(pixels, lastRow + static_cast<std::size_t>(size.width) * pixelBytes);
}

}  // namespace

const std::byte* sourceOrigin(const FilterArguments& arguments, std::size_t pixelBytes) {
    return static_cast<const std::byte*>(arguments.src) -
           static_cast<std::ptrdiff_t>(arguments.srcOffset.y) * arguments.srcStep -
           static_cast<std::ptrdiff_t>(arguments.srcOffset.x) * static_cast<std::ptrdiff_t>(pixelBytes);
}

NppStatus checkFilterArguments(const FilterArguments& arguments, std::size_t pixelBytes, NppiBorderType supported) {
    const auto& [src, srcStep, srcSize, srcOffset, dst, dstStep, roi, mask, anchor, border] = arguments;
    if (src == nullptr || dst == nullptr) return NPP_NULL_POINTER_ERROR;
    if (isEmpty(srcSize) || isEmpty(roi)) return NPP_SIZE_ERROR;
    if (const NppStatus status = checkImage(src, srcStep, srcSize, pixelBytes)) return status;
    if (const NppStatus status = checkImage(dst, dstStep, roi, pixelBytes)) return status;
    if (!isInside(srcOffset, srcSize) || roi.width > srcSize.width - srcOffset.x ||
        roi.height > srcSize.height - srcOffset.y) {
        return NPP_WRONG_INTERSECTION_ROI_ERROR;
    }
    if (isEmpty(mask)) return NPP_MASK_SIZE_ERROR;
    if (!isInside(anchor, mask)) return NPP_ANCHOR_ERROR;
    if (border != supported) return NPP_NOT_SUPPORTED_MODE_ERROR;
    if (!liesOnDevice(sourceOrigin(arguments, pixelBytes), srcStep, srcSize, pixelBytes) ||
        !liesOnDevice(dst, dstStep, roi, pixelBytes)) {
        return NPP_INVALID_DEVICE_POINTER_ERROR;
    }
    return NPP_SUCCESS;
}

}  // namespace zel::host
