#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "zel/algorithms.h"

using namespace zel;
using namespace zel::cuda;

namespace {

template <typename T, typename... Listed>
constexpr bool isIn(TypeList<Listed...>) {
    return (std::is_same_v<T, Listed> || ...);
}

/// The cells of an algorithm's row in the table of voxel types, one for each type.
template <typename Algo, typename... T>
std::string cellsOf(TypeList<T...>) {
    using Instances = typename Algo::InstanceTypes;
    using AsFloat = typename Algo::TypesAsFloat;
    std::string cells;
    (cells.append(isIn<T>(Instances{}) ? " yes |" : isIn<T>(AsFloat{}) ? " as float32 |" : " |"), ...);
    return cells;
}

template <typename... T>
std::string headerOf(TypeList<T...>) {
    std::string header = "| |";
    (header.append(" ").append(voxelTypeName(voxelTypeOf<T>)).append(" |"), ...);
    return header;
}

/// Algorithms that do not share the row of all others.
const std::map<std::string, std::string> ownRows{
    {"CudaBoxFilter2d", "Box and median filter"},
    {"CudaMedianFilter2d", "Box and median filter"},
    {"CudaErosion2d", "Erosion, dilation, opening, closing"},
    {"CudaDilation2d", "Erosion, dilation, opening, closing"},
    {"CudaOpening2d", "Erosion, dilation, opening, closing"},
    {"CudaClosing2d", "Erosion, dilation, opening, closing"},
};

}  // namespace

TEST(ReadmeTest, TellsTheVoxelTypesThatEachAlgorithmTakes) {
    std::ostringstream readme;
    readme << std::ifstream(ZEL_README).rdbuf();
    const auto expectLine = [text = readme.str()](const std::string& line) {
        EXPECT_NE(text.find("\n" + line + "\n"), std::string::npos) << "no line " << line;
    };
    expectLine(headerOf(KernelTypes{}));
    [&]<typename... Algo>(TypeList<Algo...>) {
        const auto expectRow = [&](const std::string& name, const std::string& cells) {
            expectLine("| " + (ownRows.contains(name) ? ownRows.at(name) : "Gaussian filter and all others") + " |" +
                       cells);
        };
        (expectRow(Algo::getClassInfo()->className(), cellsOf<Algo>(KernelTypes{})), ...);
    }(Algorithms{});
}
