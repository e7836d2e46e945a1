#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace zel::test {

/// A table of numbers that a page of Docs shows under its heading "## By numbers", so that tests can hold the page to
/// what the algorithm gives. The table is known by its first cell; its first row and its first column are labels:
///
///     | input | x = 0 | x = 1 |
///     |---|---|---|
///     | y = 0 | 10 | 20 |
///
/// The test program is told where Docs is: DEFINITIONS ZEL_DOCS="${PROJECT_SOURCE_DIR}/Docs".
struct DocsTable {
    /// @param page  a file of Docs, such as "median-filter.md".
    /// A page, table or number that is not there fails the test.
    DocsTable(const std::string& page, const std::string& name) {
        try {
            read(page, name);
        } catch (const std::exception& error) {
            ADD_FAILURE() << page << ", table " << name << ": " << error.what();
        }
    }

    template <typename T>
    std::vector<T> as() const {
        std::vector<T> result(numbers.size());
        std::transform(numbers.begin(), numbers.end(), result.begin(), [](double n) { return static_cast<T>(n); });
        return result;
    }

    std::size_t columns = 0, rows = 0;
    std::vector<double> numbers;  ///< row by row

private:
    static std::string trimmed(const std::string& text) {
        const std::size_t first = text.find_first_not_of(' ');
        return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
    }

    static std::vector<std::string> cellsOf(const std::string& line) {
        std::vector<std::string> cells;
        std::istringstream parts(line.substr(std::min<std::size_t>(1, line.size())));
        for (std::string cell; std::getline(parts, cell, '|');) cells.push_back(trimmed(cell));
        return cells;
    }

    void read(const std::string& page, const std::string& name) {
        std::ifstream file(ZEL_DOCS "/" + page);
        std::string line;
        const auto skipTo = [&](const std::string& what, const auto& isFound) {
            while (std::getline(file, line) && !isFound()) {
            }
            if (!file) throw std::runtime_error("there is no " + what);
        };
        skipTo("heading By numbers", [&] { return line == "## By numbers"; });
        skipTo("such table", [&] { return line.starts_with('|') && cellsOf(line).at(0) == name; });
        columns = cellsOf(line).size() - 1;
        std::getline(file, line);  // the rule below the labels
        while (std::getline(file, line) && line.starts_with('|')) {
            const std::vector<std::string> cells = cellsOf(line);
            if (cells.size() != columns + 1) throw std::runtime_error("a row has another length than the first");
            for (std::size_t i = 1; i < cells.size(); ++i) numbers.push_back(std::stod(cells[i]));
            ++rows;
        }
    }
};

}  // namespace zel::test
