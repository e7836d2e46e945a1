#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace zel::bench {

/// A program that reads what we send and writes what we receive.
class ChildProcess {
public:
    /// @throws std::runtime_error when it cannot be started.
    explicit ChildProcess(const std::vector<std::string>& command);
    /// Ends its input and waits for it.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// @throws std::runtime_error, as the others, when the program has ended.
    void send(const void* bytes, std::size_t count);
    void sendLine(const std::string& text);
    void receive(void* bytes, std::size_t count);
    std::string receiveLine();

private:
    [[noreturn]] void fail() const;

    std::string name_;
    pid_t process_ = 0;
    std::FILE* toChild_ = nullptr;
    std::FILE* fromChild_ = nullptr;
};

}  // namespace zel::bench
