#include "ProgramTest.h"

namespace zel::test {

class ApplicationTest : public ProgramTest {};

TEST_F(ApplicationTest, FailuresAreOneLineAndLeaveNothing) {
    folder.write("in.npy", npyBytes("|u1", "(3, 2, 2)", "abcdefghijkl"));
    folder.write("double.npy", npyBytes("<f8", "(1,)", "abcdefgh"));
    constexpr int failure = 1, usage = 2;
    const std::tuple<const char*, int, const char*> cases[] = {
        {"", usage, "(see zel --help)"},
        {"blur in.npy", usage, "'blur' is none of its commands box-filter, "},
        {"box-filter in.npy out.npy", usage, "--kernel is required (see zel box-filter --help)"},
        {"box-filter in.npy out.npy --kernel 9,9 --size 3", usage, "--size"},
        // Wrong values are found before a file is read.
        {"box-filter gone.npy out.npy --kernel 0,3", usage,
         "--kernel is '0,3', but takes one or two whole numbers from"},
        {"box-filter gone.npy out.npy --kernel 3,3 --tile 0,8", usage, "--tile is '0,8', but takes two or three whole"},
        {"box-filter gone.npy out.npy --kernel 3,3 --placement moon", usage, "is 'moon', but takes one of auto, host, device"},
        {"box-filter gone.npy out.npy --kernel 3,3 --device 7", usage, "--device is '7', but takes 0: this"},
        {"convert gone.npy out.npy --type float16", usage, "--type is 'float16', but takes one of uint8, "},
        {"opening gone.npy out.npy --radius 2", usage, "--neighborhood is required"},
        // These only when the input is known, or the output's name.
        {"gaussian-filter gone.npy out.npy --sigma 1e9", usage, "--sigma is '1e+09', but takes at most 2796202.5 with"},
        {"gaussian-filter in.npy out.npy --sigma 1 --output-type int16", usage, "is 'int16', but takes uint8, the inp"},
        {"non-local-means gone.npy out.npy --patch-radius 0", usage, "--patch-radius is '0', but takes a whole number"},
        {"non-local-means gone.npy out.npy --spatial-sigma 1e9", usage,
         "--spatial-sigma is '1e+09', but takes less"},
        {"template-matching gone.npy t.npy s.npy i.npy --index-type float32", usage, "is 'float32', but takes uint8, "},
        {"box-filter double.npy out.npy --kernel 3", failure, "fit with zel convert double.npy NEW.npy --type float32"},
        {"box-filter gone.npy out.npy --kernel 3,3", failure, "cannot read gone.npy: no such file"},
        {"box-filter gone.npy out.gif --kernel 3,3", failure, "cannot write out.gif: the name has to end in"},
        {"box-filter gone.npy no/out.npy --kernel 3,3", failure, "cannot write no/out.npy: folder no: no such"},
        {"box-filter in.npy out.png --kernel 3,3", failure, "PNG holds one slice, the image has 3"},
        {"convert in.npy out.png --type float32", failure, "the image is float32"},
    };
    for (const auto& [arguments, exitCode, text] : cases) {
        SCOPED_TRACE(arguments);
        expectOneErrorLine(zel(arguments), exitCode, text);
    }
    EXPECT_THAT(folder.names(), ElementsAre("double.npy", "in.npy"));
}

TEST_F(ApplicationTest, HelpAndVersionArePrinted) {
    EXPECT_THAT(zel("--version").output, StartsWith("zel "));
    EXPECT_THAT(zel("box-filter --help").output, HasSubstr("Usage: zel box-filter [OPTIONS] INPUT OUTPUT"));
}

}  // namespace zel::test
