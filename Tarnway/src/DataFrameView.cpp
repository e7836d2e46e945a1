#include "tarnway/DataFrameView.h"

#include <algorithm>
#include <stdexcept>

namespace tarnway {

DataFrameView::DataFrameView(std::vector<Column> columns) : columns_(std::move(columns)) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const Column& column = columns_[i];
        if (column.values.size() != columns_.front().values.size()) {
            throw std::invalid_argument("column \"" + column.name + "\" has " + std::to_string(column.values.size()) +
                                        " rows, the first column has " +
                                        std::to_string(columns_.front().values.size()));
        }
        if (columnIndex(column.name) != i) throw std::invalid_argument("two columns are named \"" + column.name + "\"");
    }
}

Vector<std::size_t, 2> DataFrameView::shape() const {
    return Vector<std::size_t, 2>(columns_.size(), columns_.empty() ? 0 : columns_.front().values.size());
}

std::optional<std::size_t> DataFrameView::columnIndex(std::string_view name) const {
    const auto found = std::find_if(columns_.begin(), columns_.end(), [&](const Column& c) { return c.name == name; });
    if (found == columns_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - columns_.begin());
}

}  // namespace tarnway
