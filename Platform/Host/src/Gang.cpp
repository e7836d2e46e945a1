#include "Gang.h"

#include <algorithm>
#include <atomic>
#include <chrono>

#include "Dealing.h"
#include "SpinWait.h"

namespace zel::host {
namespace {

constexpr std::size_t mostShares = 256;  // threads that a loop can use

/// A thread's place in the gang, with its share of the loop's items: in one cache line, which is all that has to travel
/// between two processors for a thread to see that there is work.
///
/// The caller of a loop offers it to all places, and has threads come to those that are empty. A thread that takes the
/// offer up is waited for; an offer that nobody has taken is withdrawn, so that a thread which the system keeps from
/// running holds no loop up.
struct alignas(64) Place {
    enum class State : int {
        Empty,
        Waiting,  ///< a thread waits for a loop, or is on its way to the place
        Offered,
        Taken
    };

    std::atomic<State> state{State::Empty};
    std::atomic<std::size_t> next{0};  ///< the first item of the share that is not dealt
    std::size_t end = 0;

    bool change(State from, State to) {
        return state.load(std::memory_order_relaxed) == from &&
               state.compare_exchange_strong(from, to, std::memory_order_acq_rel);
    }
};
using State = Place::State;

/// The one loop that the gang works on. Never destroyed: a thread may look at it until the process ends.
///
/// Every thread has a share of the items, the same one in each loop of that length: what it wrote in the loop before is
/// still in its own caches. When it is done with its share it helps with the others'.
struct Gang {
    Place places[mostShares];  ///< the first is the caller's
    alignas(64) std::atomic<bool> taken{false};  ///< by a caller
    alignas(64) std::size_t grain = 1;
    std::size_t shareCount = 1;
    LoopPiece run = nullptr;
    void* loop = nullptr;

    void workFrom(std::size_t own) {
        for (std::size_t i = 0; i < shareCount; ++i) workOff(places[(own + i) % shareCount]);
    }

private:
    /// Takes half of what is left each time, so that others find something to help with until the end.
    void workOff(Place& share) {
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
void fillPlace(std::size_t own) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::microseconds patience{30};
    constexpr int looksPerClockRead = 64;
    Place& place = gang.places[own];
    auto patienceEnds = Clock::now() + patience;
    do {
        for (int look = 0; look < looksPerClockRead; ++look) {
            if (place.change(State::Offered, State::Taken)) {
                gang.workFrom(own);
                place.state.store(State::Waiting, std::memory_order_release);
                patienceEnds = Clock::now() + patience;
            }
            SpinWait::pause();
        }
    } while (Clock::now() < patienceEnds || !place.change(State::Waiting, State::Empty));
}

void offerLoop(std::size_t index) {
    Place& place = gang.places[index];
    if (place.change(State::Waiting, State::Offered)) return;
    if (place.change(State::Empty, State::Offered)) startTask([index] { fillPlace(index); });
}

void withdrawOffer(Place& place) {
    if (place.change(State::Offered, State::Waiting)) return;
    for (SpinWait wait; place.state.load(std::memory_order_acquire) == State::Taken;) wait();
}

}  // namespace

bool isGangWaiting() {
    return gang.places[1].state.load(std::memory_order_relaxed) == State::Waiting;
}

bool runInGang(std::size_t begin, std::size_t end, std::size_t grain, LoopPiece run, void* loop) {
    if (gang.taken.exchange(true, std::memory_order_acquire)) return false;
    gang.shareCount = std::min(static_cast<std::size_t>(usableThreads()), mostShares);
    gang.grain = grain;
    gang.run = run;
    gang.loop = loop;
    const std::size_t shareItems = end / gang.shareCount + (end % gang.shareCount != 0 ? 1 : 0);
    for (std::size_t i = 0; i < gang.shareCount; ++i) {
        gang.places[i].next.store(std::max(begin, i * shareItems), std::memory_order_relaxed);
        gang.places[i].end = std::min((i + 1) * shareItems, end);
    }
    for (std::size_t i = 1; i < gang.shareCount; ++i) offerLoop(i);
    gang.workFrom(0);
    for (std::size_t i = 1; i < gang.shareCount; ++i) withdrawOffer(gang.places[i]);
    gang.taken.store(false, std::memory_order_release);
    return true;
}

}  // namespace zel::host
