#include "System/Output.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>

#include "System/ErrorText.h"

namespace zel::tool {

namespace {

bool isTaken = false;

}  // namespace

void takeStandardOutput() {
    if (isTaken) throw std::runtime_error("standard output takes one result only");
    isTaken = true;
}

void printLine(const std::string& line) {
    const std::string text = line + "\n";
    std::FILE* const stream = isTaken ? stderr : stdout;
    if (std::fwrite(text.data(), 1, text.size(), stream) == text.size() && std::fflush(stream) == 0) return;
    throw std::runtime_error("cannot write to standard output: " + systemErrorText(errno));
}

void printJson(const nlohmann::ordered_json& object) {
    printLine(object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void printError(std::string_view message) noexcept {
    std::fputs("zel: ", stderr);
    for (const char letter : message) std::fputc(letter == '\n' ? ' ' : letter, stderr);
    std::fputc('\n', stderr);
}

}  // namespace zel::tool
