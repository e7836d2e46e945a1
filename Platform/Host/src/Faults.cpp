#include "Faults.h"

#include <cufft.h>
#include <nppdefs.h>

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "HostDevice.h"
#include "RuntimeCall.h"

namespace zel::host {
namespace {

struct NameHash : std::hash<std::string_view> {
    using is_transparent = void;
};

/// Counts of calls and the armed fault. Never destroyed: calls may come from other libraries' destructors at exit.
struct CallBook {
    std::mutex mutex;
    std::unordered_map<std::string, std::uint64_t, NameHash, std::equal_to<>> counts;
    std::uint64_t total = 0;
    Fault fault;
    std::uint64_t callsToFault = 0;  ///< 0: none armed
    bool fired = false;
};

CallBook& callBook() {
    static CallBook& book = *new CallBook;
    return book;
}

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

std::optional<int> enterCall(const char* name, CallFamily family) {
    const auto fault = countCall(name);
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

std::uint64_t callCount(std::string_view name) {
    CallBook& book = callBook();
    const std::lock_guard lock(book.mutex);
    const auto found = book.counts.find(name);
    return found == book.counts.end() ? 0 : found->second;
}

std::uint64_t callCount() {
    CallBook& book = callBook();
    const std::lock_guard lock(book.mutex);
    return book.total;
}

void resetCallCounts() {
    CallBook& book = callBook();
    const std::lock_guard lock(book.mutex);
    book.counts.clear();
    book.total = 0;
}

void injectFault(const Fault& fault) {
    CallBook& book = callBook();
    const std::lock_guard lock(book.mutex);
    book.fault = fault;
    book.callsToFault = fault.nth;
    book.fired = false;
}

void clearFault() {
    CallBook& book = callBook();
    const std::lock_guard lock(book.mutex);
    book.callsToFault = 0;
    clearStickyError();
}

bool faultFired() {
    CallBook& book = callBook();
    const std::lock_guard lock(book.mutex);
    return book.fired;
}

}  // namespace zel::host
