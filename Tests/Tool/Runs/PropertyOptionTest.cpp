#include "Runs/PropertyOption.h"

#include "Messages.h"

namespace zel::test {

using ::testing::HasSubstr;

TEST(NumberOptionTest, TakesNumbersOfTheRangeAndNothingElse) {
    const auto whole = [](const char* text, std::size_t minCount, std::size_t maxCount) {
        return tool::parseNumbers(text, tool::NumberFormat<unsigned>{minCount, maxCount, {.low = 1}});
    };
    EXPECT_EQ(whole("9,4294967295", 2, 2), (std::vector<unsigned>{9, 4294967295}));
    EXPECT_EQ(whole("5,007", 2, 3), (std::vector<unsigned>{5, 7}));
    EXPECT_EQ(whole("1,2,3", 2, 3), (std::vector<unsigned>{1, 2, 3}));
    for (const char* const text :
         {"",    ",",    "9",    "9,",   ",9",  "9,9,", "9,9,9", "-1,3",  "+1,3",         "9.5,9",         "9,9.0",
          "0,1", " 9,9", "9, 9", "9,9 ", "9;9", "9x9",  "0x9,9", "1e1,9", "4294967296,1", "99999999999,1", "nan,1",
          "1,0"}) {
        EXPECT_EQ(whole(text, 2, 2), std::nullopt) << text;
    }
    for (const char* const text : {"1", "1,2,", "1,2,3,", "1,2,3,4"})
        EXPECT_EQ(whole(text, 2, 3), std::nullopt) << text;

    const tool::NumberFormat<double> any{1, 3, {}}, positive{1, 3, {.low = 0, .excludesLow = true}};
    EXPECT_EQ(tool::parseNumbers("1.5,-2,1e-3", any), (std::vector<double>{1.5, -2, 0.001}));
    for (const char* const text : {"", "1.5 ", "1;5", "0x1", "1e999", "one", "0", "1,-1", "nan", "inf"})
        EXPECT_EQ(tool::parseNumbers(text, positive), std::nullopt) << text;
}

TEST(PropertyOptionTest, SetsPropertiesAndShowsTheirRangeUnitAndDefault) {
    Property<unsigned> kernelX{"kernelX", 3, {.low = 1, .high = 9, .unit = "pixels"}}, kernelY{"kernelY", 4};
    Property<Vector3<double>> sigma{"sigma", {1, 0.5, 2}, {.low = 0, .unit = "voxels"}};
    Property<double> factor{"factor", 3, {.low = 0, .excludesLow = true}};
    PropertySingleChoice shape{"shape", 1};
    Property<bool> fast{"fast", false};
    CLI::App app;
    const auto words = [](const char* name) {
        return tool::OptionWords{name, "V", "It", "", name == std::string("-k")};
    };
    addPropertyOption(app, words("-k"), kernelX, kernelY);
    addPropertyOption(app, words("--sigma"), sigma);
    addPropertyOption(app, words("--factor"), factor);
    tool::addPropertyChoice(app, words("--shape"), shape, {{"square", 1}, {"diamond", 0}});
    tool::addPropertyFlag(app, "--fast", "", fast);

    for (const char* const text : {"It (from 1 to 9 pixels)\n", "It (of at least 0 voxels; default 1,0.5,2)\n",
                                   "It (above 0; default 3)\n", "It (default square)\n"}) {
        EXPECT_THAT(app.help(), HasSubstr(text));
    }
    for (const auto& [arguments, error] :
         {std::pair{"-k 0,3", "-k is '0,3', but takes one or two whole numbers from 1 to 9, such as 3,4"},
          {"--sigma 1,-1,1", "--sigma is '1,-1,1', but takes one or three numbers of at least 0, such as 1,0.5,2"},
          {"--sigma 1,1", "--sigma is '1,1', but takes one or three numbers of at least 0, such as 1,0.5,2"},
          {"--factor 0", "--factor is '0', but takes a number above 0"},
          {"--shape disk", "--shape is 'disk', but takes square or diamond"}}) {
        EXPECT_EQ(messageOf<CLI::ValidationError>([&, text = arguments] { app.parse(text); }), error);
    }
    app.parse("-k 5,6 --shape diamond --fast");
    EXPECT_EQ(kernelX.get(), 5U);
    EXPECT_EQ(kernelY.get(), 6U);
    EXPECT_EQ(sigma.get(), (Vector3<double>{1, 0.5, 2})) << "not given";
    EXPECT_EQ(shape.get(), 0);
    EXPECT_TRUE(fast.get());
    app.parse("-k 1,2 --sigma 0,1.5,7");
    EXPECT_EQ(sigma.get(), (Vector3<double>{0, 1.5, 7}));
    app.parse("-k 7 --sigma 2");
    EXPECT_EQ(kernelY.get(), 7U);
    EXPECT_EQ(sigma.get(), (Vector3<double>{2, 2, 2}));
}

}  // namespace zel::test
