#include "Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>

#include "Dealing.h"
#include "DeviceCall.h"
#include "Settings.h"

namespace zel::host {
namespace {

using Body = std::function<void(std::size_t, std::size_t)>;

/// One loop, and the order between its caller and its pieces: what was written before is seen by the pieces, and what
/// they write by what comes after. The scheduler sees to that too, but not in the sight of ThreadSanitizer.
class Loop {
public:
    explicit Loop(const Body& body) : body_(body) {}

    void run(std::size_t begin, std::size_t end, std::size_t grain) {
        order_.store(1, std::memory_order_release);
        if (!runInGang(begin, end, grain, runPiece, this)) dealPieces(begin, end, grain, runPiece, this);
        order_.load(std::memory_order_acquire);
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    static void runPiece(void* loop, std::size_t begin, std::size_t end) {
        Loop& self = *static_cast<Loop*>(loop);
        self.order_.load(std::memory_order_acquire);
        try {
            self.body_(begin, end);
        } catch (...) {
            if (!self.failed_.exchange(true)) self.failure_ = std::current_exception();
        }
        self.order_.fetch_add(1, std::memory_order_release);
    }

    std::atomic<unsigned int> order_{0};
    std::atomic<bool> failed_{false};
    std::exception_ptr failure_;  ///< the first that a piece threw
    const Body& body_;
};

}  // namespace

int deviceThreads() {
    static const int threads = threadsSetting();
    return threads;
}

void parallelRange(std::size_t begin, std::size_t end, std::size_t grain, const Body& body) {
    if (begin >= end) return;
    if (end - begin <= grain || deviceThreads() == 1) return body(begin, end);
    Loop(body).run(begin, end, std::max<std::size_t>(1, grain));
}

void parallelFor(std::size_t count, std::size_t grain, const Body& body) {
    parallelRange(0, count, grain, body);
}

}  // namespace zel::host
