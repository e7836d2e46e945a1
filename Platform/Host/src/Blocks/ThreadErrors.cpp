#include "Blocks/ThreadErrors.h"

#include <dlfcn.h>
#include <signal.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "Device/RunningKernel.h"
#include "Device/Sanitizers.h"
#include "Device/Settings.h"

namespace zel::host {
namespace {

/// What the compiler's tools call the function at an address: kernels are not among the symbols that a program can look
/// up by itself.
std::string functionName(const void* address) {
    Dl_info file{};
    if (dladdr(address, &file) == 0) return "of no file";
    char offset[20];
    std::snprintf(offset, sizeof offset, "%tx",
                  static_cast<const char*>(address) - static_cast<const char*>(file.dli_fbase));
    const std::string command = "addr2line -fCe '" + std::string(file.dli_fname) + "' " + offset;
    std::string name;
    if (std::FILE* const output = popen(command.c_str(), "r")) {
        for (int c = std::fgetc(output); c != EOF && c != '\n'; c = std::fgetc(output)) name += static_cast<char>(c);
        pclose(output);
    }
    return name;
}

/// The name with its template arguments, but without its parameters.
std::string kernelName(const void* kernel) {
    std::string name = functionName(kernel);
    constexpr std::string_view returned = "void ", unnamed = "(anonymous namespace)";
    if (name.starts_with(returned)) name.erase(0, returned.size());
    for (auto paren = name.find('('); paren != std::string::npos; paren = name.find('(', paren + 1)) {
        if (name.compare(paren, unnamed.size(), unnamed) == 0) continue;
        name.erase(paren);
        break;
    }
    return name;
}

/// "Reduce.cu:57"
std::string text(const std::source_location& place) {
    const std::string_view file = place.file_name();
    return std::string(file.substr(file.rfind('/') + 1)) + ":" + std::to_string(place.line());
}

[[noreturn]] void end(const std::string& message) {
    std::fprintf(stderr, "host device: %s\n", message.c_str());
    std::abort();
}

/// The process ends anyway, so calls that are not safe in a signal handler can do no further harm.
void onBadAddress(int signal, siginfo_t* info, void*) {
    if (const std::string where = runningKernelThread(); !where.empty())
        std::fprintf(stderr, "host device: %sthere is no memory at %p\n", where.c_str(), info->si_addr);
    ::signal(signal, SIG_DFL);  // the access comes again
}

/// A stack that is left when a fiber has used up its own.
struct HandlerStack {
    static constexpr std::size_t bytes = 256 << 10;
    std::unique_ptr<char[]> memory{new char[bytes]};

    HandlerStack() { use(0); }
    ~HandlerStack() { use(SS_DISABLE); }

private:
    void use(int flags) const {
        stack_t stack{};
        stack.ss_sp = memory.get();
        stack.ss_size = bytes;
        stack.ss_flags = flags;
        sigaltstack(&stack, nullptr);
    }
};

bool installHandler() {
    struct sigaction present {};
    sigaction(SIGSEGV, nullptr, &present);
    if (present.sa_handler != SIG_DFL) return false;
    struct sigaction action {};
    action.sa_sigaction = onBadAddress;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    return sigaction(SIGSEGV, &action, nullptr) == 0;
}

}  // namespace

std::string text(uint3 index) {
    return "(" + std::to_string(index.x) + ", " + std::to_string(index.y) + ", " + std::to_string(index.z) + ")";
}

std::string kernelBlockText(const void* kernel, uint3 block) {
    return "kernel " + kernelName(kernel) + ", block " + text(block) + ", ";
}

std::string kernelThreadText(const void* kernel, uint3 block, uint3 thread) {
    return kernelBlockText(kernel, block) + "thread " + text(thread) +
           ", ZEL_HOST_THREAD_SEED=" + std::to_string(threadSeedSetting()) + ": ";
}

void endWithError(const std::string& what) {
    end(runningKernelThread() + what);
}

void endWithBarrierError(const void* kernel, const BlockThread& waiting, const BlockThread& other) {
    const std::string that = other.hasEnded() ? "ended after " + std::to_string(other.barriers()) + " barriers"
                                              : "waits at another one, " + text(other.place());
    end(kernelThreadText(kernel, blockIdx, waiting.index()) + "it waits at its barrier number " +
        std::to_string(waiting.barriers()) + ", " + text(waiting.place()) + ", but thread " + text(other.index()) +
        " " + that);
}

void reportBadAddresses() {
    if (underThreadSanitizer || underAddressSanitizer) return;  // they report them
    thread_local const HandlerStack stack;
    static const bool installed = installHandler();
    static_cast<void>(installed);
}

}  // namespace zel::host
