#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace zel::test {

struct ProcessResult {
    int exitCode = -1;  ///< minus the signal when one ended the process
    std::string output;
    std::string errors;
};

/// A run of the zel program as a process of its own, in a folder of its own for what it prints.
class ZelProcess {
public:
    /// @param folder         its current folder.
    /// @param fileSizeLimit  bytes that a file of the process may have, where every further write fails.
    ZelProcess(const std::vector<std::string>& arguments, const std::string& folder,
               std::optional<unsigned> fileSizeLimit = {});
    ~ZelProcess();
    ZelProcess(const ZelProcess&) = delete;
    ZelProcess& operator=(const ZelProcess&) = delete;

    void send(int signal) const;
    ProcessResult wait();

private:
    pid_t id_ = -1;
    int output_ = -1;
    int errors_ = -1;
};

/// Runs the program to its end.
ProcessResult runZel(const std::vector<std::string>& arguments, const std::string& folder,
                     std::optional<unsigned> fileSizeLimit = {});

}  // namespace zel::test
