#pragma once

#include <sys/wait.h>

#include "ByteText.h"
#include "Messages.h"
#include "TemporaryFolder.h"

namespace zel::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct ProgramResult {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// Runs of the program in a folder of the test's own.
class ProgramTest : public ::testing::Test {
protected:
    /// @param before  shell commands that come first.
    ProgramResult zel(const std::string& arguments, const std::string& before = "") const {
        const std::string program = "exec " ZEL_PROGRAM " " + arguments;
        const std::string redirection = " >" + streams_ / "output" + " 2>" + streams_ / "errors";
        const int status = std::system(("cd " + folder.path() + "; " + before + program + redirection).c_str());
        return {WEXITSTATUS(status), streams_.read("output"), streams_.read("errors")};
    }

    TemporaryFolder folder;

private:
    TemporaryFolder streams_;
};

/// The program has printed one line on standard error and nothing else.
inline void expectOneErrorLine(const ProgramResult& result, int exitCode, const std::string& text) {
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, StartsWith("zel: "));
    EXPECT_THAT(result.errors, HasSubstr(text));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
}

/// The same where the exit code is 2 exactly for lines that name the help.
inline void expectOneErrorLine(const ProgramResult& result, const std::string& text) {
    expectOneErrorLine(result, result.errors.ends_with("--help)\n") ? 2 : 1, text);
}

}  // namespace zel::test
