// Bars as the program draws them on a terminal.

#include "ImageFiles/ImageFile.h"
#include "ProgramTest.h"
#include "TestImages.h"

namespace zel::test {
namespace {

using ::testing::AllOf;
using ::testing::IsEmpty;
using ::testing::Not;

class ProgressBarTest : public ProgramTest {
protected:
    ProgressBarTest() { tool::writeImageFile(folder / "in.tif", randomImage<float>({300, 200}, 1)); }

    std::string drawn(const std::string& arguments, unsigned columns = 80, const std::string& term = "xterm") const {
        const std::string command = "stty cols " + std::to_string(columns) + "; " ZEL_PROGRAM " " + arguments;
        const std::string onTerminal = "script -qec '" + command + "' /dev/null </dev/null >drawn";
        EXPECT_EQ(std::system(("cd " + folder.path() + "; TERM=" + term + " " + onTerminal).c_str()), 0);
        return folder.read("drawn");
    }

    /// What was drawn from each carriage return on, up to where the rest of the line is erased.
    static std::vector<std::string> linesOf(const std::string& drawn) {
        const std::string erase = "\x1b[K";
        std::vector<std::string> lines;
        for (std::size_t end = drawn.find(erase); end != std::string::npos; end = drawn.find(erase, end + 1)) {
            lines.push_back(drawn.substr(0, end).substr(drawn.rfind('\r', end) + 1));
        }
        return lines;
    }
};

TEST_F(ProgressBarTest, coversReadingRunningAndWriting) {
    const auto isFull = [](const std::string& work) {
        return HasSubstr(work + " [" + std::string(40, '#') + "] 100 %");
    };
    EXPECT_THAT(drawn("box-filter --kernel 3 in.tif out.mrc"),
                AllOf(isFull("reading"), isFull("running"), isFull("writing")));
    EXPECT_THAT(drawn("convert --type uint8 in.tif out.png"),
                AllOf(isFull("reading"), isFull("converting"), isFull("writing")));
    EXPECT_THAT(drawn("info out.mrc in.tif"), AllOf(isFull("reading"), isFull("measuring")));
}

TEST_F(ProgressBarTest, fitsTheTerminal) {
    for (const unsigned columns : {20, 30}) {
        const auto lines = linesOf(drawn("box-filter --kernel 3 in.tif out.npy", columns));
        EXPECT_THAT(lines, Not(IsEmpty()));
        for (const std::string& line : lines) EXPECT_LT(line.size(), columns) << line;
    }
    EXPECT_THAT(linesOf(drawn("box-filter --kernel 3 --quiet in.tif out.npy")), IsEmpty());
    EXPECT_THAT(linesOf(drawn("box-filter --kernel 3 in.tif out.npy", 80, "dumb")), IsEmpty());
}

}  // namespace
}  // namespace zel::test
