#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include "host_runtime/Parallel.h"

using zel::host::parallelFor;

namespace {

void expectEachItemOnce(std::size_t count, std::size_t grain) {
    std::vector<int> visits(count);
    parallelFor(count, grain, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) ++visits[i];
    });
    ASSERT_EQ(std::count(visits.begin(), visits.end(), 1), static_cast<std::ptrdiff_t>(count))
        << count << " items, grain " << grain;
}

}  // namespace

// One caller after the other finds workers that wait for it; several at once find some of them busy.
TEST(Parallel, ComesToEachItemOnceForAnyNumberOfCallers) {
    const auto loops = [](unsigned seed) {
        std::mt19937 random(seed);
        for (int i = 0; i < 300; ++i) expectEachItemOnce(random() % 2000, 1 + random() % 50);
    };
    loops(0);
    std::vector<std::thread> callers;
    for (unsigned seed = 1; seed < 4; ++seed) callers.emplace_back(loops, seed);
    for (std::thread& caller : callers) caller.join();
}

TEST(Parallel, TellsItsCallerOfAPieceThatFailed) {
    for (int i = 0; i < 20; ++i) {
        const auto failing = [](std::size_t begin, std::size_t end) {
            if (begin <= 70 && 70 < end) throw std::runtime_error("item 70");
        };
        EXPECT_THROW(parallelFor(100, 1, failing), std::runtime_error);
        expectEachItemOnce(100, 1);
    }
}
