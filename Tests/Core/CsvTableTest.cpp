#include "tarnway/CsvTable.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

using tarnway::readCsv;

TEST(CsvTableTest, ReadsColumnsByName) {
    std::istringstream text(
        "\xEF\xBB\xBF"
        "theta, phi\r\n0.5,-1e-3\r\n\r\n +2 ,3\r\n");
    const tarnway::DataFrameView table = readCsv(text, "rows.csv");
    ASSERT_EQ(table.shape(), (tarnway::Vector<std::size_t, 2>(2, 2)));
    EXPECT_EQ(table.columnIndex("phi"), 1U);
    EXPECT_EQ(table.at(0, 1), -1e-3);
    EXPECT_EQ(table.at(1, 0), 2);
    std::istringstream headerOnly("phi\n");
    EXPECT_EQ(readCsv(headerOnly, "rows.csv").shape(), (tarnway::Vector<std::size_t, 2>(1, 0)));
}

TEST(CsvTableTest, NamesLineAndColumnOfWhatIsWrong) {
    const std::pair<const char*, const char*> cases[]{
        {"", "t, line 0: the line of column names is missing"},
        {"phi,,psi\n", "t, line 1, column 2: the column's name is missing"},
        {"phi,psi,phi\n", "t, line 1, column 3: a second column is named \"phi\""},
        {"phi,psi\n1,2\n\n3\n", "t, line 4 has 1 fields; the table has 2 columns"},
        {"phi\n1,\n", "t, line 2 has 2 fields; the table has 1 columns"},
        {"phi,psi\n1,2x\n", "t, line 2, column 2 (psi): \"2x\" is not a number that a double holds"},
        {"phi\n1e999\n", "t, line 2, column 1 (phi): \"1e999\" is not a number that a double holds"},
    };
    for (const auto& [content, message] : cases) {
        std::istringstream text(content);
        try {
            readCsv(text, "t");
            ADD_FAILURE() << content;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), message);
        }
    }
}
