#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "zel/BaseAlgorithm.h"

namespace zel::tool {

/// Cancels the algorithm's runs after a signal, for as long as this object lives.
class CancelOnInterrupt {
public:
    explicit CancelOnInterrupt(BaseAlgorithm& algorithm);
    ~CancelOnInterrupt() = default;
    CancelOnInterrupt(const CancelOnInterrupt&) = delete;
    CancelOnInterrupt& operator=(const CancelOnInterrupt&) = delete;

private:
    void watch(const std::stop_token& stop);

    BaseAlgorithm& algorithm_;
    std::mutex mutex_;
    std::condition_variable_any wakeUp_;
    std::jthread watcher_;  // last: it uses all of the above
};

}  // namespace zel::tool
