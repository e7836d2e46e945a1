#include <host_device.h>

#include <mutex>

#include "Calls/CallBook.h"

namespace zel::host {

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
