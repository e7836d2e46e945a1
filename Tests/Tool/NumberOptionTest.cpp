#include "Cli/NumberOption.h"

#include <gtest/gtest.h>

namespace zel::test {

TEST(NumberOptionTest, TakesWholeNumbersAndNothingElse) {
    EXPECT_EQ(tool::parseWholeNumbers("9,4294967295", 2), (tool::Numbers{9, 4294967295}));
    EXPECT_EQ(tool::parseWholeNumbers("0,007", 2), (tool::Numbers{0, 7}));
    EXPECT_EQ(tool::parseWholeNumbers("5", 1), (tool::Numbers{5}));
    for (const char* const text :
         {"",     ",",    "9",    "9,",  ",9",  "9,9,",  "9,9,9", "-1,3",         "+1,3",          "9.5,9", "9,9.0",
          " 9,9", "9, 9", "9,9 ", "9;9", "9x9", "0x9,9", "1e1,9", "4294967296,1", "99999999999,1", "nan,1"}) {
        EXPECT_EQ(tool::parseWholeNumbers(text, 2), std::nullopt) << text;
    }
}

}  // namespace zel::test
