#include "OutputFormats.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <iterator>

#include "base/Utf8.h"

namespace regscan {

namespace {

constexpr std::size_t kColumns = 7;
typedef std::array<std::string, kColumns> Row;

const Row kCsvHeader = {"registry", "key",        "name",       "version",
                        "vendor",   "installDir", "description"};
const Row kTableHeader = {"REGISTRY",          "KEY",        "NAME", "VERSION", "VENDOR",
                          "INSTALL DIRECTORY", "DESCRIPTION"};

Row cells(const InventoryRecord& record) {
    return {record.registry, record.key,        record.name,       record.version,
            record.vendor,   record.installDir, record.description};
}

// Control characters would break the table's lines and alignment.
std::string printable(std::string text) {
    for (char& c : text) {
        unsigned char byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            c = ' ';
        }
    }
    return text;
}

}  // namespace

std::size_t displayWidth(const std::string& text) {
    return Utf8::decode(text.data(), text.size()).size();
}

std::string truncateToWidth(const std::string& text, std::size_t width) {
    std::wstring wide = Utf8::decode(text.data(), text.size());
    if (wide.size() <= width) {
        return text;
    }
    if (width == 0) {
        return std::string();
    }
    wide.resize(width - 1);
    wide += L'\x2026';
    return Utf8::encode(wide.data(), wide.size());
}

std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"') {
            quoted += '"';
        }
        quoted += c;
    }
    quoted += '"';
    return quoted;
}

void writeCsv(std::ostream& out, const std::vector<InventoryRecord>& records) {
    auto writeRow = [&out](const Row& row) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            out << (i == 0 ? "" : ",") << csvField(row[i]);
        }
        out << "\r\n";
    };
    writeRow(kCsvHeader);
    for (const InventoryRecord& record : records) {
        writeRow(cells(record));
    }
}

void writeJson(std::ostream& out, const std::vector<InventoryRecord>& records) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const InventoryRecord& record : records) {
        Row row = cells(record);
        nlohmann::ordered_json object = nlohmann::ordered_json::object();
        for (std::size_t i = 0; i < kColumns; ++i) {
            object[kCsvHeader[i]] = std::move(row[i]);
        }
        for (const auto& extra : record.extraFields) {
            object[extra.first] = extra.second;
        }
        array.push_back(std::move(object));
    }
    out << array.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void writeTable(std::ostream& out, const std::vector<InventoryRecord>& records,
                std::size_t descriptionWidth) {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(records.size() + 1);
    rows.emplace_back(kTableHeader.begin(), kTableHeader.end());
    for (const InventoryRecord& record : records) {
        Row row = cells(record);
        row[kColumns - 1] = truncateToWidth(row[kColumns - 1], descriptionWidth);
        rows.emplace_back(std::make_move_iterator(row.begin()), std::make_move_iterator(row.end()));
    }
    writeColumns(out, rows);
}

void writeColumns(std::ostream& out, const std::vector<std::vector<std::string>>& input) {
    std::size_t columns = 0;
    for (const std::vector<std::string>& row : input) {
        columns = std::max(columns, row.size());
    }
    std::vector<std::vector<std::string>> rows(input.size());
    std::vector<std::vector<std::size_t>> widths(input.size());
    std::vector<std::size_t> columnWidth(columns, 0);
    for (std::size_t r = 0; r < input.size(); ++r) {
        rows[r].resize(columns);
        widths[r].resize(columns);
        for (std::size_t c = 0; c < input[r].size(); ++c) {
            rows[r][c] = printable(input[r][c]);
            widths[r][c] = displayWidth(rows[r][c]);
            columnWidth[c] = std::max(columnWidth[c], widths[r][c]);
        }
    }

    std::string line;
    for (std::size_t r = 0; r < rows.size(); ++r) {
        line.clear();
        for (std::size_t c = 0; c < columns; ++c) {
            if (c > 0) {
                line += "  ";
            }
            line += rows[r][c];
            if (c + 1 < columns) {
                line.append(columnWidth[c] - widths[r][c], ' ');
            }
        }
        line.erase(line.find_last_not_of(' ') + 1);
        line += '\n';
        out << line;
    }
}

}  // namespace regscan
