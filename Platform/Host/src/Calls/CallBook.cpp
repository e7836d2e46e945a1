#include "Calls/CallBook.h"

#include <cufft.h>
#include <nppdefs.h>

#include <atomic>
#include <mutex>

#include "Device/PendingError.h"

namespace zel::host {
namespace {

constinit std::atomic<int> standingError = cudaSuccess;

int defaultStatus(const Fault& fault, std::string_view call, CallFamily family) {
    if (family == CallFamily::npp) return NPP_CUDA_KERNEL_EXECUTION_ERROR;
    if (family == CallFamily::cufft) return CUFFT_EXEC_FAILED;
    if (fault.kind == FaultKind::failed) return cudaErrorLaunchFailure;
    if (call.starts_with("cudaMalloc")) return cudaErrorMemoryAllocation;
    return call == "cudaLaunchKernelEx" ? cudaErrorLaunchOutOfResources : cudaErrorInvalidValue;
}

/// What a call returns while a sticky error stands.
int standingStatus(CallFamily family) {
    switch (family) {
        case CallFamily::npp:
            return NPP_CUDA_KERNEL_EXECUTION_ERROR;
        case CallFamily::cufft:
            return CUFFT_EXEC_FAILED;
        case CallFamily::runtime:
            break;
    }
    return standingError;
}

/// Counts the call; gives the fault when it fires on it.
std::optional<Fault> countCall(std::string_view name) {
    CallBook& book = callBook();
    const std::lock_guard lock(book.mutex);
    ++book.total;
    if (const auto found = book.counts.find(name); found != book.counts.end())
        ++found->second;
    else
        book.counts.emplace(name, 1);
    if (book.callsToFault == 0 || (!book.fault.call.empty() && book.fault.call != name)) return std::nullopt;
    if (--book.callsToFault != 0) return std::nullopt;
    book.fired = true;
    return book.fault;
}

}  // namespace

CallBook& callBook() {
    static CallBook& book = *new CallBook;
    return book;
}

std::optional<int> enterCall(const char* name, CallFamily family, HeldWorkUse heldWork) {
    const auto fault = countCall(name);
    try {
        beforeCall(fault || standingError != cudaSuccess ? HeldWorkUse::run : heldWork);
    } catch (...) {
        return exceptionStatus(family);
    }
    if (standingError != cudaSuccess) return standingStatus(family);
    if (!fault) return std::nullopt;
    const int status = fault->status != 0 ? fault->status : defaultStatus(*fault, name, family);
    if (fault->kind == FaultKind::failed)
        standingError = family == CallFamily::runtime ? status : cudaErrorLaunchFailure;
    else if (family == CallFamily::runtime)
        report(static_cast<cudaError_t>(status));
    return status;
}

int stickyError() {
    return standingError;
}
void clearStickyError() {
    standingError = cudaSuccess;
}

}  // namespace zel::host
