#include "diagnostics/DebugFacility.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "DebugEnvironment.h"
#include "diagnostics/QnMinimalAssertionHandler.h"

using namespace zel::diagnostics;
using zel::test::DebugEnvironment;

namespace {

template <typename Action>
std::string printedBy(const Action& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

/// Sets the facility up, and shuts it down again; what stays is in debugSettings().
std::string printedAtSetUp() {
    return printedBy([] {
        initialiseDebugging();
        shutDownDebugging();
    });
}

using Words = std::vector<std::string>;

Words words(const DebugWordList& list) {
    Words result;
    for (std::int32_t i = 0; i < list.count(); ++i) result.emplace_back(list[i]);
    return result;
}

const std::string found = "Found KESTA_DEBUG -> Enabling debugging output\n";
const std::string levelAdvice = "      you can set the level by providing KESTA_DEBUG_LEVEL\n";
const std::string filterAdvice =
    "      you can set a function filter by providing KESTA_DEBUG_FUNC_FILTER\n"
    "      you can set a package filter by providing KESTA_DEBUG_PACKAGE_FILTER\n";

}  // namespace

TEST(DebugFacilityTest, WithoutItsVariableSaysNothingAndReadsNoFilter) {
    const DebugEnvironment environment{{"KESTA_DEBUG_LEVEL", "9"}, {"KESTA_DEBUG_FUNC_FILTER", "never"}};
    EXPECT_EQ(printedAtSetUp(), "");
    EXPECT_EQ(debugSettings().debugLevel, 3);
    EXPECT_EQ(debugSettings().functionFilter.count(), 0);
}

TEST(DebugFacilityTest, SaysWhatItFoundAndWhatElseThereIs) {
    {
        const DebugEnvironment environment{{"KESTA_DEBUG", ""}};
        EXPECT_EQ(printedAtSetUp(), found + levelAdvice + filterAdvice);
        EXPECT_EQ(debugSettings().debugLevel, 7);
    }
    const DebugEnvironment environment{{"KESTA_DEBUG", "0"},
                                       {"KESTA_DEBUG_LEVEL", "6"},
                                       {"KESTA_DEBUG_FUNC_FILTER", " run  cancel "},
                                       {"KESTA_DEBUG_PACKAGE_FILTER", ""}};
    EXPECT_EQ(printedAtSetUp(), found + "   level set to KESTA_DEBUG_LEVEL = INFO   \n" +
                                    "   set funcfilter from KESTA_DEBUG_FUNC_FILTER = (run, cancel, )\n" +
                                    "   set packagefilter from KESTA_DEBUG_PACKAGE_FILTER = ()\n");
    EXPECT_EQ(debugSettings().debugLevel, 6);
    EXPECT_EQ(words(debugSettings().functionFilter), (Words{"run", "cancel"})) << "the words outlast the shutdown";
    EXPECT_EQ(debugSettings().packageFilter.count(), 0);
}

TEST(DebugFacilityTest, NamesEachLevel) {
    const std::pair<const char*, const char*> names[] = {
        {"-1", "NONE"},      {"0", "EMERG  "},     {"1", "ALERT  "},  {"2", "CRIT   "},  {"3", "ERR    "},
        {"4", "WARNING"},    {"5", "NOTICE "},     {"6", "INFO   "},  {"7", "DEBUG  "},  {"8", "DEBUG+1"},
        {"9", "DEBUG+2"},    {"10", "DEBUG+3"},    {"11", "DEBUG+4"}, {"12", "DEBUG>4"}, {"40", "DEBUG>4"},
        {"many", "EMERG  "}, {"5 of 9", "NOTICE "}};
    for (const auto& [value, name] : names) {
        const DebugEnvironment environment{{"KESTA_DEBUG", "1"}, {"KESTA_DEBUG_LEVEL", value}};
        EXPECT_EQ(printedAtSetUp(), found + "   level set to KESTA_DEBUG_LEVEL = " + name + "\n" + filterAdvice);
    }
    EXPECT_STREQ(debugLevelName(INT32_MIN), "NONE");
    EXPECT_STREQ(debugLevelName(INT32_MAX), "DEBUG>4");
}

TEST(DebugFacilityTest, CountsItsUsersAndHasAHandlerForAsLongAsThereAreSome) {
    const DebugEnvironment environment{{"KESTA_DEBUG", ""}};
    EXPECT_NE(printedBy([] { initialiseDebugging(); }), "");
    const QnAssertionHandler* const handler = debugSettings().assertionHandler.get();
    ASSERT_NE(handler, nullptr);
    EXPECT_EQ(printedAtSetUp(), "") << "only the first user sets it up";
    EXPECT_EQ(debugSettings().assertionHandler.get(), handler) << "and the last one takes it down";
    shutDownDebugging();
    EXPECT_EQ(debugSettings().assertionHandler, nullptr);
    EXPECT_NE(printedAtSetUp(), "") << "it can be set up again";
}

TEST(AssertionHandlerTest, PrintsALineAndReturnsTheValue) {
    QnMinimalAssertionHandler handler;
    EXPECT_EQ(printedBy([&] {
                  EXPECT_EQ(handler.assertionFailed(-5, "a < b", "one.cpp", 12), -5);
                  EXPECT_EQ(handler.requireFailed(7, "p", "two.cpp", -1), 7);
                  EXPECT_EQ(handler.ensureFailed(0, "100%s", "three.cpp", 0), 0);
                  EXPECT_EQ(handler.criticalError(INT32_MIN, "no \"room\"", "four.cpp", INT32_MAX), INT32_MIN);
              }),
              "Assertion a < b failed, file one.cpp, line 12\n"
              "Require p failed, file two.cpp, line -1\n"
              "Ensure 100%s failed, file three.cpp, line 0\n"
              "Critical Error no \"room\", file four.cpp, line 2147483647\n");
}

TEST(DebugWordListTest, SplitsAtBlanksUpToItsCapacity) {
    EXPECT_EQ(words(DebugWordList("   ")), Words{});
    EXPECT_EQ(words(DebugWordList("a")), Words{"a"});
    EXPECT_EQ(words(DebugWordList("  one   two,three\tfour ")), (Words{"one", "two,three\tfour"}));
    std::string many;
    for (int i = 0; i < 60; ++i) many += std::to_string(i) + " ";
    const Words kept = words(DebugWordList(many.c_str()));
    EXPECT_EQ(kept.size(), 49U);
    EXPECT_EQ(kept.back(), "48");
}
