#include "Gang.h"

#include <algorithm>
#include <atomic>
#include <chrono>

#include "Dealing.h"
#include "SpinWait.h"

namespace zel::host {
namespace {

constexpr std::size_t mostShares = 256;  // threads that a loop can use

/// The one loop that the gang works on. Never destroyed: a member may look at it until the process ends.
///
/// A member that comes in first counts itself in `inside` and then looks whether the loop is open; the caller first
/// closes the loop and then waits until nobody is inside. So no member touches a loop that its caller has left.
///
/// Every thread has a share of the items, the same one in each loop of that length: what it wrote in the loop before is
/// still in its own caches. When it is done with its share it helps with the others'.
struct Gang {
    struct alignas(64) Share {
        std::atomic<std::size_t> next{0};
        std::size_t end = 0;
    };

    std::atomic<bool> taken{false};  ///< by a caller
    std::atomic<bool> open{false};   ///< members may come in
    std::atomic<int> inside{0};
    std::atomic<int> members{0};  ///< that wait for a loop, or are on their way to it

    std::size_t grain = 1;
    std::size_t shareCount = 1;
    LoopPiece run = nullptr;
    void* loop = nullptr;
    Share shares[mostShares];

    void workFrom(std::size_t own) {
        for (std::size_t i = 0; i < shareCount; ++i) workOff(shares[(own + i) % shareCount]);
    }

private:
    /// Takes half of what is left each time, so that others find something to help with until the end.
    void workOff(Share& share) {
        std::size_t begin = share.next.load(std::memory_order_relaxed);
        while (begin < share.end) {
            const std::size_t left = share.end - begin;
            const std::size_t piece = left < 2 * grain ? left : std::max(grain, left / 2);
            if (!share.next.compare_exchange_weak(begin, begin + piece, std::memory_order_relaxed)) continue;
            run(loop, begin, begin + piece);
            begin = share.next.load(std::memory_order_relaxed);
        }
    }
};

constinit Gang gang;

/// Works on the loops that come within some microseconds of each other.
void beMember(std::size_t own) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::microseconds patience{30};
    constexpr int looksPerClockRead = 64;
    auto patienceEnds = Clock::now() + patience;
    do {
        for (int look = 0; look < looksPerClockRead; ++look) {
            if (gang.open.load(std::memory_order_relaxed)) {
                gang.inside.fetch_add(1);
                if (gang.open.load()) gang.workFrom(own);
                gang.inside.fetch_sub(1);
                // The loop is all dealt; it stays open until its caller has seen that too.
                for (SpinWait wait; gang.open.load(std::memory_order_relaxed);) wait();
                patienceEnds = Clock::now() + patience;
            }
            SpinWait::pause();
        }
    } while (Clock::now() < patienceEnds);
    gang.members.fetch_sub(1, std::memory_order_relaxed);
}

/// Members lose patience at about the same time. While any of them is left no others are called; a loop then has fewer
/// threads, which change no result.
void callMembers() {
    if (gang.members.load(std::memory_order_relaxed) != 0) return;
    const auto wanted = static_cast<int>(gang.shareCount) - 1;
    gang.members.store(wanted, std::memory_order_relaxed);
    for (int i = 1; i <= wanted; ++i) startTask([own = static_cast<std::size_t>(i)] { beMember(own); });
}

}  // namespace

bool isGangWaiting() {
    return gang.members.load(std::memory_order_relaxed) != 0;
}

bool runInGang(std::size_t begin, std::size_t end, std::size_t grain, LoopPiece run, void* loop) {
    if (gang.taken.exchange(true, std::memory_order_acquire)) return false;
    gang.shareCount = std::min(static_cast<std::size_t>(usableThreads()), mostShares);
    const std::size_t shareItems = end / gang.shareCount + (end % gang.shareCount != 0 ? 1 : 0);
    for (std::size_t i = 0; i < gang.shareCount; ++i) {
        gang.shares[i].next.store(std::max(begin, i * shareItems), std::memory_order_relaxed);
        gang.shares[i].end = std::min((i + 1) * shareItems, end);
    }
    gang.grain = grain;
    gang.run = run;
    gang.loop = loop;
    callMembers();
    gang.open.store(true);
    gang.workFrom(0);
    gang.open.store(false);
    for (SpinWait wait; gang.inside.load() != 0;) wait();
    gang.taken.store(false, std::memory_order_release);
    return true;
}

}  // namespace zel::host
