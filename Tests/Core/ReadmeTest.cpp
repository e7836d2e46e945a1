#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "zel/algorithms.h"

using namespace zel;
using namespace zel::cuda;

namespace {

std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream text(line.substr(1));
    for (std::string cell; std::getline(text, cell, '|');) {
        const std::size_t first = cell.find_first_not_of(' ');
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(' ') - first + 1));
    }
    return cells;
}

/// The README's table of voxel types: what each row says of each type's name.
std::map<std::string, std::map<std::string, std::string>> tableOfTypes() {
    std::ifstream readme(ZEL_README);
    std::vector<std::string> names;
    std::map<std::string, std::map<std::string, std::string>> table;
    for (std::string line; std::getline(readme, line);) {
        if (line.starts_with("| | uint8 |")) {
            names = cellsOf(line);
        } else if (!names.empty() && !line.starts_with("|")) {
            break;
        } else if (!names.empty()) {
            const std::vector<std::string> cells = cellsOf(line);
            for (std::size_t i = 1; i < names.size(); ++i) table[cells[0]][names[i]] = cells[i];
        }
    }
    return table;
}

template <typename... T>
void mark(TypeList<T...>, [[maybe_unused]] const char* entry, std::map<std::string, std::string>& row) {
    ((row[std::string(voxelTypeName(voxelTypeOf<T>))] = entry), ...);
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

template <typename Algo>
void expectRowOfTypes() {
    std::map<std::string, std::string> expected;
    mark(KernelTypes{}, "", expected);
    mark(typename Algo::InstanceTypes{}, "yes", expected);
    mark(typename Algo::TypesAsFloat{}, "as float32", expected);
    const std::string name = Algo::getClassInfo()->className();
    const auto own = ownRows.find(name);
    EXPECT_EQ(tableOfTypes()[own == ownRows.end() ? "Gaussian filter and all others" : own->second], expected) << name;
}

}  // namespace

TEST(ReadmeTest, TellsTheVoxelTypesThatEachAlgorithmTakes) {
    []<typename... Algo>(TypeList<Algo...>) { (expectRowOfTypes<Algo>(), ...); }(Algorithms{});
}
