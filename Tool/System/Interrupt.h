#pragma once

#include <exception>

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

/// From here on SIGINT, SIGTERM and SIGHUP are only recorded, for the functions below, and a write beyond the limit of
/// a file's size fails instead of ending the process. Signals that are ignored already stay ignored.
void installSignalHandlers();

/// Whether one of the signals has come.
bool isInterrupted();

/// @throws Interrupted once one of the signals has come. Cheap: call it between rows.
void checkInterrupt();

}  // namespace zel::tool
