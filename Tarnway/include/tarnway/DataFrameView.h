#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarnway/Vector.h"
#include "tarnway/export.h"

namespace tarnway {

/// A table of numbers with named columns.
class TARNWAY_API DataFrameView {
public:
    struct Column {
        std::string name;
        std::vector<double> values;
    };

    /// @throws std::invalid_argument when columns differ in length or two have the same name.
    explicit DataFrameView(std::vector<Column> columns);

    /// Number of columns, number of rows.
    Vector<std::size_t, 2> shape() const;
    const std::string& columnName(std::size_t column) const { return columns_[column].name; }
    std::optional<std::size_t> columnIndex(std::string_view name) const;
    double at(std::size_t row, std::size_t column) const { return columns_[column].values[row]; }

private:
    std::vector<Column> columns_;
};

}  // namespace tarnway
