// Template matching and the commands around it, from files to files.

#include <nlohmann/json.hpp>

#include "ImageFiles/ImageFile.h"
#include "PlantedParticle.h"
#include "ProgramTest.h"

namespace zel::test {

class MatchingCommandsTest : public ProgramTest {
protected:
    /// A particle of random voxels that is planted at two places, as it is and a quarter turned about z.
    MatchingCommandsTest() {
        PlantedParticle planted;
        planted.plantAt({12, 6, 4}, true);
        planted.plantAt({2, 3, 7}, false);
        tool::writeImageFile(folder / "map.npy", planted.volume);
        tool::writeImageFile(folder / "particle.npy", planted.particle);
        folder.write("rows.csv", "psi,phi\n0.5,0.4\n0,1.5707963267948966\n0,0\n");
    }
};

TEST_F(MatchingCommandsTest, FindWhatWasPlanted) {
    for (const std::string variant : {"", "--placement device --threads 1", "--tile 14,12,14 --index-type uint32"}) {
        SCOPED_TRACE(variant);
        const ProgramResult matching =
            zel("template-matching map.npy particle.npy score.npy row.npy --table rows.csv --json " + variant);
        ASSERT_EQ(matching.exitCode, 0) << matching.errors;
        EXPECT_EQ(nlohmann::json::parse(matching.output)["rows"], 3);
        ASSERT_EQ(zel("peaks score.npy row.npy peaks.csv --table rows.csv --distance 4 --threshold 0.99").exitCode, 0);
        const auto peaks = folder.read("peaks.csv");
        EXPECT_THAT(peaks, StartsWith("x,y,z,score,row,phi,theta,psi\n"));
        EXPECT_EQ(std::count(peaks.begin(), peaks.end(), '\n'), 3) << peaks;
        EXPECT_THAT(peaks, HasSubstr("\n14,8,6,"));
        EXPECT_THAT(peaks, HasSubstr(",1,1.5707963267948966,0,0\n"));
        EXPECT_THAT(peaks, HasSubstr("\n4,5,9,"));
        EXPECT_THAT(peaks, HasSubstr(",2,0,0,0\n"));
    }
    EXPECT_THAT(zel("info row.npy").output, HasSubstr("uint32"));
    EXPECT_THAT(zel("rotations many.csv --step 30").output, StartsWith("many.csv: 552 rows, 46 directions with 12 "));
    ASSERT_EQ(zel("frequency-filter particle.npy filter.npy --table many.csv --low-pass 0.3").exitCode, 0);
    folder.write("mask.npy", npyBytes("|u1", "(5, 5, 5)", std::string(125, '\1')));
    ASSERT_EQ(zel("template-matching map.npy particle.npy score.npy row.npy --table many.csv --mask mask.npy "
                  "--mask-follows-transformation --frequency-filter filter.npy")
                  .errors,
              "");
    EXPECT_THAT(zel("info row.npy").output, HasSubstr("uint16")) << "552 rows";
}

TEST_F(MatchingCommandsTest, SayWhatIsWrongAndWriteNothing) {
    folder.write("bad.csv", "phi\n1\n2;5\n");
    folder.write("flat.csv", "scaleX,phi\n1,0\n0,0\n");
    folder.write("tilt.csv", "phi,tilt\n1,1\n");
    std::string rows = "phi\n";
    for (int row = 0; row < 257; ++row) rows += "0\n";
    folder.write("long.csv", rows);
    folder.write("mask.npy", npyBytes("|u1", "(5, 5, 4)", std::string(100, '\1')));
    folder.write("small.npy", npyBytes("|u1", "(5, 5, 5)", std::string(125, '\1')));
    folder.write("high.npy", npyBytes("|u1", "(14, 16, 24)", std::string(24 * 16 * 14, '\7')));
    const std::string matching = "template-matching map.npy particle.npy score.npy row.npy ";
    const std::string filter = "frequency-filter particle.npy filter.npy ";
    const std::pair<std::string, std::string> cases[]{
        {matching + "--table bad.csv", "bad.csv, line 3, column 1 (phi)"},
        {matching + "--table flat.csv", "scaleX 0 in row 1; a scale must be a finite number above 0"},
        {matching + "--table long.csv --index-type uint8", "is 'uint8', but takes uint16 or more: there are 257 rows"},
        {matching + "--index-type float32", "takes uint8, uint16 or uint32"},
        {matching + "--mask mask.npy", "4 x 5 x 5"},
        {matching + "--frequency-filter small.npy", "it must be at least 6 x 5 x 5"},
        {"template-matching map.npy map.npy same.npy same.npy", "SCORE and INDEX are the same file"},
        {"template-matching particle.npy map.npy score.npy row.npy", "24 x 16 x 14"},
        {filter + "--low-pass 0.2 --table flat.csv", "flat.csv has scaleX 0 in row 1; a scale must be"},
        {filter + "--low-pass 0.2 --table tilt.csv", "tilt.csv has a column \"tilt\""},
        {filter, "give --low-pass, --high-pass or --missing-wedge"},
        {"peaks map.npy particle.npy peaks.csv --table rows.csv --distance 4", "particle.npy is 5 x 5 x 5"},
        {"peaks map.npy high.npy peaks.csv --table rows.csv --distance 4", "but the table has 3 rows"},
        {"rotations no/rows.csv --step 10", "no/rows.csv"},
    };
    const auto before = folder.names();
    for (const auto& [command, text] : cases) {
        SCOPED_TRACE(command);
        expectOneErrorLine(zel(command), text);
        EXPECT_EQ(folder.names(), before);
    }
    expectOneErrorLine(zel("rotations rows.csv --step 0"), 2, "--step is '0'");
    expectOneErrorLine(zel("peaks map.npy map.npy p.csv --table rows.csv --distance 0"), 2, "--distance is '0'");
    expectOneErrorLine(zel(filter + "--missing-wedge 90"), 2, "--missing-wedge is '90'");
}

}  // namespace zel::test
