#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

#include "zel/BaseAlgorithm.h"

namespace zel::tool {

/// The user or the system asked the program to end. Unwinding on it leaves no partial output behind.
class Interrupted : public std::exception {
public:
    explicit Interrupted(int signal) : signal_(signal) {}
    const char* what() const noexcept override { return "interrupted"; }
    /// What shells expect of a program ended by the signal: 130 for SIGINT, 143 for SIGTERM.
    int exitCode() const { return 128 + signal_; }

private:
    int signal_;
};

/// From here on SIGINT, SIGTERM and SIGHUP only leave a note for checkInterrupt, and a file that may not grow is an
/// error of its write instead of the end of the process.
void installSignalHandlers();

/// @throws Interrupted once one of the signals has come. Cheap: call it between rows.
void checkInterrupt();

/// Cancels the algorithm's runs after a signal, for as long as it lives.
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
