#include "Parallel.h"

#include <algorithm>
#include <atomic>

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

    void run(std::size_t count, std::size_t grain) {
        order_.store(1, std::memory_order_release);
        dealPieces(count, grain, runPiece, this);
        order_.load(std::memory_order_acquire);
    }

private:
    static void runPiece(void* loop, std::size_t begin, std::size_t end) {
        Loop& self = *static_cast<Loop*>(loop);
        self.order_.load(std::memory_order_acquire);
        self.body_(begin, end);
        self.order_.fetch_add(1, std::memory_order_release);
    }

    std::atomic<unsigned int> order_{0};
    const Body& body_;
};

}  // namespace

int deviceThreads() {
    static const int threads = threadsSetting();
    return threads;
}

void parallelFor(std::size_t count, std::size_t grain, const Body& body) {
    if (count == 0) return;
    if (count <= grain || deviceThreads() == 1) return body(0, count);
    Loop(body).run(count, std::max<std::size_t>(1, grain));
}

}  // namespace zel::host
