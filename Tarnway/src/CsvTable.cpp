#include "tarnway/CsvTable.h"

#include <charconv>
#include <istream>
#include <stdexcept>

namespace tarnway {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    for (std::size_t begin = 0;;) {
        const std::size_t comma = line.find(',', begin);
        fields.push_back(trimmed(line.substr(begin, comma - begin)));
        if (comma == std::string_view::npos) return fields;
        begin = comma + 1;
    }
}

/// Reads the lines one by one and knows where it is.
class Reader {
public:
    Reader(std::istream& text, std::string_view name) : text_(text), name_(name) {}

    /// The next line that is not empty; false at the end.
    bool next(std::string& line) {
        while (std::getline(text_, line)) {
            constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
            if (++line_ == 1 && line.starts_with(byteOrderMark)) line.erase(0, byteOrderMark.size());
            if (!trimmed(line).empty()) return true;
        }
        return false;
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw std::invalid_argument(std::string(name_) + ", line " + std::to_string(line_) + what);
    }
    [[noreturn]] void fail(std::size_t column, const std::string& what) const {
        fail(", column " + std::to_string(column + 1) + what);
    }

private:
    std::istream& text_;
    std::string_view name_;
    std::size_t line_ = 0;
};

std::vector<DataFrameView::Column> readHeader(Reader& reader) {
    std::string line;
    if (!reader.next(line)) reader.fail(": the line of column names is missing");
    std::vector<DataFrameView::Column> columns;
    for (const std::string_view name : fieldsOf(line)) {
        if (name.empty()) reader.fail(columns.size(), ": the column's name is missing");
        for (const DataFrameView::Column& other : columns) {
            if (other.name == name) reader.fail(columns.size(), ": a second column is named \"" + other.name + "\"");
        }
        columns.push_back({std::string(name), {}});
    }
    return columns;
}

double toNumber(const Reader& reader, std::string_view field, std::size_t column, const std::string& columnName) {
    const std::string_view digits = field.starts_with('+') ? field.substr(1) : field;
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        reader.fail(column,
                    " (" + columnName + "): \"" + std::string(field) + "\" is not a number that a double holds");
    }
    return value;
}

}  // namespace

DataFrameView readCsv(std::istream& text, std::string_view name) {
    Reader reader(text, name);
    std::vector<DataFrameView::Column> columns = readHeader(reader);
    std::string line;
    while (reader.next(line)) {
        const std::vector<std::string_view> fields = fieldsOf(line);
        if (fields.size() != columns.size()) {
            reader.fail(" has " + std::to_string(fields.size()) + " fields; the table has " +
                        std::to_string(columns.size()) + " columns");
        }
        for (std::size_t i = 0; i < fields.size(); ++i) {
            columns[i].values.push_back(toNumber(reader, fields[i], i, columns[i].name));
        }
    }
    return DataFrameView(std::move(columns));
}

}  // namespace tarnway
