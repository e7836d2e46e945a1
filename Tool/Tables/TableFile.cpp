#include "Tables/TableFile.h"

#include <sstream>
#include <stdexcept>

#include "ImageFiles/Common/AtomicFile.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/InputFile.h"
#include "ImageFiles/Common/NumberText.h"
#include "tarnway/CsvTable.h"

namespace zel::tool {

namespace {

std::string contentOf(const std::string& path) {
    InputFile file(path);
    std::string content;
    std::string piece(std::size_t{1} << 20, '\0');
    while (const std::size_t count = file.read(piece.data(), piece.size())) content.append(piece, 0, count);
    return content;
}

}  // namespace

tarnway::DataFrameView readTableFile(const std::string& path) {
    std::istringstream text(contentOf(path));
    try {
        return tarnway::readCsv(text, path);
    } catch (const std::invalid_argument& error) {
        throw FileError(error.what());
    }
}

void writeTableFile(const std::string& path, const std::vector<tarnway::DataFrameView::Column>& columns) {
    std::string text;
    const auto endField = [&](const auto& column) { text += &column == &columns.back() ? '\n' : ','; };
    for (const auto& column : columns) {
        text += column.name;
        endField(column);
    }
    for (std::size_t row = 0; row < columns.front().values.size(); ++row) {
        for (const auto& column : columns) {
            text += numberToText(column.values[row]);
            endField(column);
        }
    }
    AtomicFile file(path);
    file.write(text.data(), text.size());
    file.commit();
}

void checkTableWritable(const std::string& path) {
    AtomicFile::checkWritable(path);
}

}  // namespace zel::tool
