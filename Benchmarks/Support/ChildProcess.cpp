#include "ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace zel::bench {

namespace {

/// Read and write end. A child keeps only what it is given.
std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe can be made");
    return ends;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) : name_(command.front()) {
    std::signal(SIGPIPE, SIG_IGN);  // a program that has ended is an error like others
    const auto [childInput, input] = makePipe();
    const auto [output, childOutput] = makePipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, childInput, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, childOutput, STDOUT_FILENO);
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int status = posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(childInput);
    close(childOutput);
    toChild_ = fdopen(input, "w");
    fromChild_ = fdopen(output, "r");
    if (status == 0) return;
    std::fclose(toChild_);
    std::fclose(fromChild_);
    throw std::runtime_error(name_ + " cannot be started");
}

ChildProcess::~ChildProcess() {
    std::fclose(toChild_);
    std::fclose(fromChild_);
    waitpid(process_, nullptr, 0);
}

void ChildProcess::send(const void* bytes, std::size_t count) {
    if (std::fwrite(bytes, 1, count, toChild_) != count || std::fflush(toChild_) != 0) fail();
}

void ChildProcess::sendLine(const std::string& text) {
    send((text + '\n').data(), text.size() + 1);
}

void ChildProcess::receive(void* bytes, std::size_t count) {
    if (std::fread(bytes, 1, count, fromChild_) != count) fail();
}

std::string ChildProcess::receiveLine() {
    std::string text;
    for (int letter = std::fgetc(fromChild_); letter != '\n'; letter = std::fgetc(fromChild_)) {
        if (letter == EOF) fail();
        text += static_cast<char>(letter);
    }
    return text;
}

void ChildProcess::fail() const {
    throw std::runtime_error(name_ + " ended early; see above");
}

}  // namespace zel::bench
