#include "Runs/NumberOption.h"

#include <gtest/gtest.h>

namespace zel::test {

TEST(NumberOptionTest, TakesWholeNumbersAndNothingElse) {
    const auto parse = [](const char* text, std::size_t minCount, std::size_t maxCount) {
        return tool::parseNumbers(text, tool::NumberFormat<unsigned>{minCount, maxCount, {.low = 1}});
    };
    using Numbers = std::vector<unsigned>;
    EXPECT_EQ(parse("9,4294967295", 2, 2), (Numbers{9, 4294967295}));
    EXPECT_EQ(parse("5,007", 2, 3), (Numbers{5, 7}));
    EXPECT_EQ(parse("1,2,3", 2, 3), (Numbers{1, 2, 3}));
    for (const char* const text :
         {"",    ",",    "9",    "9,",   ",9",  "9,9,", "9,9,9", "-1,3",  "+1,3",         "9.5,9",         "9,9.0",
          "0,1", " 9,9", "9, 9", "9,9 ", "9;9", "9x9",  "0x9,9", "1e1,9", "4294967296,1", "99999999999,1", "nan,1",
          "1,0"}) {
        EXPECT_EQ(parse(text, 2, 2), std::nullopt) << text;
    }
    for (const char* const text : {"1", "1,2,", "1,2,3,", "1,2,3,4"})
        EXPECT_EQ(parse(text, 2, 3), std::nullopt) << text;
}

TEST(NumberOptionTest, TakesRealNumbersOfTheRange) {
    const auto parse = [](const char* text, const Allowed<double>& allowed) {
        return tool::parseNumbers(text, tool::NumberFormat<double>{1, 3, allowed});
    };
    EXPECT_EQ(parse("1.5,-2,1e-3", {}), (std::vector<double>{1.5, -2, 0.001}));
    EXPECT_EQ(parse("0", {.low = 0}), (std::vector<double>{0}));
    for (const char* const text : {"", "1.5 ", "1;5", "0x1", "1e999", "one", "0", "1,-1", "nan", "inf"}) {
        EXPECT_EQ(parse(text, {.low = 0, .excludesLow = true}), std::nullopt) << text;
    }
}

}  // namespace zel::test
