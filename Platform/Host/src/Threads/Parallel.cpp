#include "host_runtime/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <optional>
#include <vector>

#include "Threads/Arena.h"
#include "Threads/Team.h"

namespace zel::host {
namespace {

using Body = std::function<void(std::size_t, std::size_t)>;

struct Piece {
    std::size_t begin, end;
};

/// A worker's part of a loop's items, in a cache line of its own.
class alignas(64) Share {
public:
    void set(std::size_t begin, std::size_t end) {
        next_.store(begin, std::memory_order_relaxed);
        end_ = end;
    }

    /// Half of what is left, so that others find something to help with until the end.
    std::optional<Piece> take(std::size_t grain) {
        std::size_t begin = next_.load(std::memory_order_relaxed);
        while (begin < end_) {
            const std::size_t left = end_ - begin;
            const std::size_t end = begin + (left < 2 * grain ? left : std::max(grain, left / 2));
            if (next_.compare_exchange_weak(begin, end, std::memory_order_relaxed)) return Piece{begin, end};
        }
        return std::nullopt;
    }

private:
    std::atomic<std::size_t> next_{0};
    std::size_t end_ = 0;
};

/// A worker has the same items in each loop of that length: what it wrote in the loop before is still in its own
/// caches. When it is done with its share it helps with the others'.
class Loop final : public OpenLoop {
public:
    /// @param threads  at most `usable` ones.
    Loop(std::size_t count, std::size_t grain, std::size_t threads, std::size_t usable, const Body& body)
        : OpenLoop(threads - 1, usable - 1), shares_(threads), grain_(grain), body_(body) {
        for (std::size_t i = 0; i < threads; ++i) shares_[i].set(count * i / threads, count * (i + 1) / threads);
    }

    void run() {
        callWorkers();
        work(0);
        close();
        if (failure_) std::rethrow_exception(failure_);
    }

    void work(std::size_t worker) override {
        try {
            while (const auto piece = take(worker)) {
                body_(piece->begin, piece->end);
                if (worker == 0) callWorkers();  // others may have become free
            }
        } catch (...) {
            if (!failed_.exchange(true)) failure_ = std::current_exception();
        }
    }

private:
    std::optional<Piece> take(std::size_t worker) {
        for (std::size_t i = 0; i < shares_.size(); ++i)
            if (const auto piece = shares_[(worker + i) % shares_.size()].take(grain_)) return piece;
        return std::nullopt;
    }

    std::vector<Share> shares_;
    const std::size_t grain_;
    const Body& body_;
    std::atomic<bool> failed_{false};
    std::exception_ptr failure_;  ///< the first that a thread met
};

}  // namespace

void parallelFor(std::size_t count, std::size_t grain, const Body& body) {
    if (count == 0) return;
    grain = std::max<std::size_t>(1, grain);
    const std::size_t pieces = (count - 1) / grain + 1;
    const std::size_t usable = pieces == 1 ? 1 : usableThreads();
    if (usable == 1) return body(0, count);
    Loop(count, grain, std::min(pieces, usable), usable, body).run();
}

}  // namespace zel::host
