#include "Runs/PropertyOption.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Messages.h"

namespace zel::test {

using ::testing::HasSubstr;
using tool::addPropertyChoice;
using tool::addPropertyFlag;
using tool::addPropertyOption;

/// A command with an option for each kind of property.
class PropertyOptionTest : public ::testing::Test {
protected:
    PropertyOptionTest() {
        addPropertyOption(app, {.name = "--kernel", .values = "X,Y", .description = "Sides", .isRequired = true},
                          kernelX, kernelY);
        addPropertyOption(app, {.name = "--sigma", .values = "X,Y,Z", .description = "Width"}, sigma);
        addPropertyOption(app, {.name = "--factor", .values = "F", .description = "Size"}, factor);
        addPropertyChoice(app, {.name = "--shape", .values = "SHAPE", .description = "Form"}, shape,
                          {{"square", 1}, {"diamond", 0}});
        addPropertyFlag(app, "--fast", "", fast);
    }

    std::string refusal(const std::string& arguments) {
        return messageOf<CLI::ValidationError>([&] { app.parse(arguments); });
    }

    Property<unsigned> kernelX{"kernelX", 3, {.low = 1, .high = 9, .unit = "pixels"}};
    Property<unsigned> kernelY{"kernelY", 4, {.low = 1, .high = 9, .unit = "pixels"}};
    Property<Vector3<double>> sigma{"sigma", {1, 0.5, 2}, {.low = 0, .unit = "voxels"}};
    Property<double> factor{"factor", 3, {.low = 0, .excludesLow = true}};
    PropertySingleChoice shape{"shape", 1};
    Property<bool> fast{"fast", false};
    CLI::App app;
};

TEST_F(PropertyOptionTest, SetsWhatIsGivenAndLeavesTheRest) {
    app.parse("--kernel 5,6 --shape diamond --fast");
    EXPECT_EQ(kernelX.get(), 5U);
    EXPECT_EQ(kernelY.get(), 6U);
    EXPECT_EQ(sigma.get(), (Vector3<double>{1, 0.5, 2}));
    EXPECT_EQ(shape.get(), 0);
    EXPECT_TRUE(fast.get());
    app.parse("--kernel 1,2 --sigma 0,1.5,7");
    EXPECT_EQ(sigma.get(), (Vector3<double>{0, 1.5, 7}));
}

TEST_F(PropertyOptionTest, HelpAndErrorsTellRangeUnitAndDefault) {
    const std::string help = app.help();
    EXPECT_THAT(help, HasSubstr("--kernel X,Y REQUIRED       Sides (from 1 to 9 pixels)\n"));
    EXPECT_THAT(help, HasSubstr("Width (of at least 0 voxels; default 1,0.5,2)\n"));
    EXPECT_THAT(help, HasSubstr("Size (above 0; default 3)\n"));
    EXPECT_THAT(help, HasSubstr("Form (default square)\n"));
    EXPECT_EQ(refusal("--kernel 0,3"), "--kernel is '0,3', but takes two whole numbers from 1 to 9, such as 3,4");
    EXPECT_EQ(refusal("--kernel 1,1 --sigma 1,-1,1"),
              "--sigma is '1,-1,1', but takes three numbers of at least 0, such as 1,0.5,2");
    EXPECT_EQ(refusal("--kernel 1,1 --factor 0"), "--factor is '0', but takes a number above 0");
    EXPECT_EQ(refusal("--kernel 1,1 --shape disk"), "--shape is 'disk', but takes square or diamond");
}

}  // namespace zel::test
