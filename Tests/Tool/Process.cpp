#include "Process.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace zel::test {

namespace {

std::string contents(int descriptor) {
    lseek(descriptor, 0, SEEK_SET);
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t got = 0; (got = read(descriptor, buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(got));
    }
    return text;
}

}  // namespace

ZelProcess::ZelProcess(const std::vector<std::string>& arguments, const std::string& folder,
                       std::optional<unsigned> fileSizeLimit)
    : output_(memfd_create("output", MFD_CLOEXEC)), errors_(memfd_create("errors", MFD_CLOEXEC)) {
    std::vector<char*> words{const_cast<char*>(ZEL_PROGRAM)};
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    id_ = fork();
    if (id_ != 0) return;
    dup2(output_, STDOUT_FILENO);
    dup2(errors_, STDERR_FILENO);
    if (fileSizeLimit) {
        const rlimit limit{*fileSizeLimit, *fileSizeLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (chdir(folder.c_str()) == 0) execv(ZEL_PROGRAM, words.data());
    _exit(127);
}

ZelProcess::~ZelProcess() {
    if (id_ > 0) {
        kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
    }
    close(output_);
    close(errors_);
}

void ZelProcess::send(int signal) const {
    kill(id_, signal);
}

ProcessResult ZelProcess::wait() {
    int status = 0;
    waitpid(id_, &status, 0);
    id_ = -1;
    const int exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return {exitCode, contents(output_), contents(errors_)};
}

ProcessResult runZel(const std::vector<std::string>& arguments, const std::string& folder,
                     std::optional<unsigned> fileSizeLimit) {
    return ZelProcess(arguments, folder, fileSizeLimit).wait();
}

}  // namespace zel::test
