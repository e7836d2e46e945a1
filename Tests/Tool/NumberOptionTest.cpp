#include "Runs/NumberOption.h"

#include <gtest/gtest.h>

namespace zel::test {

TEST(NumberOptionTest, TakesWholeNumbersAndNothingElse) {
    EXPECT_EQ(tool::parseNumbers<unsigned>("9,4294967295", 2), (tool::Numbers{9, 4294967295}));
    EXPECT_EQ(tool::parseNumbers<unsigned>("0,007", 2), (tool::Numbers{0, 7}));
    EXPECT_EQ(tool::parseNumbers<unsigned>("5", 1), (tool::Numbers{5}));
    for (const char* const text :
         {"",     ",",    "9",    "9,",  ",9",  "9,9,",  "9,9,9", "-1,3",         "+1,3",          "9.5,9", "9,9.0",
          " 9,9", "9, 9", "9,9 ", "9;9", "9x9", "0x9,9", "1e1,9", "4294967296,1", "99999999999,1", "nan,1"}) {
        EXPECT_EQ(tool::parseNumbers<unsigned>(text, 2), std::nullopt) << text;
    }
    EXPECT_EQ(tool::parseNumbers<unsigned>("1,2", {2, 3}), (tool::Numbers{1, 2}));
    EXPECT_EQ(tool::parseNumbers<unsigned>("1,2,3", {2, 3}), (tool::Numbers{1, 2, 3}));
    for (const char* const text : {"1", "1,2,", "1,2,3,", "1,2,3,4"}) {
        EXPECT_EQ(tool::parseNumbers<unsigned>(text, {2, 3}), std::nullopt) << text;
    }
}

TEST(NumberOptionTest, TakesRealNumbers) {
    EXPECT_EQ(tool::parseNumbers<double>("1.5,-2,1e-3", 3), (tool::RealNumbers{1.5, -2, 0.001}));
    for (const char* const text : {"", "1.5 ", "1,5", "0x1", "1e999", "one"}) {
        EXPECT_EQ(tool::parseNumbers<double>(text, 1), std::nullopt) << text;
    }
}

}  // namespace zel::test
