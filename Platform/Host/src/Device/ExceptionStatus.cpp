#include "Device/ExceptionStatus.h"

#include <cufft.h>
#include <nppdefs.h>

#include <new>

#include "Device/PendingError.h"

namespace zel::host {
namespace {

int memoryStatus(CallFamily family) {
    switch (family) {
        case CallFamily::npp:
            return NPP_MEMORY_ALLOCATION_ERR;
        case CallFamily::cufft:
            return CUFFT_ALLOC_FAILED;
        case CallFamily::runtime:
            break;
    }
    return report(cudaErrorMemoryAllocation);
}

int unknownStatus(CallFamily family) {
    switch (family) {
        case CallFamily::npp:
            return NPP_ERROR;
        case CallFamily::cufft:
            return CUFFT_INTERNAL_ERROR;
        case CallFamily::runtime:
            break;
    }
    return report(cudaErrorUnknown);
}

}  // namespace

int exceptionStatus(CallFamily family) {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return memoryStatus(family);
    } catch (...) {
        return unknownStatus(family);
    }
}

}  // namespace zel::host
