#include "Tables/TableFile.h"

#include <cmath>

#include "ImageFiles/Common/FileError.h"
#include "Messages.h"
#include "TemporaryFolder.h"

using namespace zel;
using namespace zel::test;

TEST(TableFileTest, WritesNumbersThatReadBackAsTheSame) {
    const TemporaryFolder folder;
    const std::string path = folder / "rows.csv";
    const std::vector<double> phi{0.1, -1e-300, 12345678.9}, psi{3, M_PI, 1 / 3.0};
    tool::writeTableFile(path, {{"phi", phi}, {"psi", psi}});
    EXPECT_THAT(folder.read("rows.csv"), testing::StartsWith("phi,psi\n0.1,3\n"));
    const tarnway::DataFrameView table = tool::readTableFile(path);
    ASSERT_EQ(table.shape(), (tarnway::Vector<std::size_t, 2>(2, 3)));
    for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_EQ(table.at(row, 0), phi[row]);
        EXPECT_EQ(table.at(row, 1), psi[row]);
    }
    folder.write("rows.csv", "phi\n1\ntwo\n");
    EXPECT_EQ(messageOf<tool::FileError>([&] { tool::readTableFile(path); }),
              path + ", line 3, column 1 (phi): \"two\" is not a number that a double holds");
    EXPECT_THROW(tool::writeTableFile(folder / "no/rows.csv", {{"phi", phi}}), tool::FileError);
    EXPECT_THROW(tool::checkTableWritable(folder / "no/rows.csv"), tool::FileError);
}
