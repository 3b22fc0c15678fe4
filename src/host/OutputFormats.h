// The inventory's three output formats.
#ifndef REGSCAN_OUTPUTFORMATS_H
#define REGSCAN_OUTPUTFORMATS_H

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "Inventory.h"

namespace regscan {

// Descriptions longer than this many characters are cut in the table.
constexpr std::size_t kTableDescriptionWidth = 60;

// The number of characters of a UTF-8 text; each byte that is not part of a
// well-formed sequence counts as one.
std::size_t displayWidth(const std::string& text);

// `text` cut to at most `width` characters, the last of them an ellipsis when it was
// cut. Never splits a character; bytes that are not UTF-8 are kept as they are.
std::string truncateToWidth(const std::string& text, std::size_t width);

// One CSV field: quoted (inner quotes doubled) when it contains a comma, a quote, a
// carriage return or a line feed, else as it is.
std::string csvField(const std::string& text);

// A header line and one line per record, lines ended by CR LF; columns registry,
// key, name, version, vendor, installDir, description.
void writeCsv(std::ostream& out, const std::vector<InventoryRecord>& records);

// A JSON array of objects with the keys registry, key, name, version, vendor,
// installDir, description, then the record's extra fields (an Orlo product's kind
// and TAG_FILE, the Tessel catalog's state fields, say); bytes that are not UTF-8
// become U+FFFD.
void writeJson(std::ostream& out, const std::vector<InventoryRecord>& records);

// An aligned table for people: a header line and one line per record, columns
// separated by two blanks, each as wide as its widest cell; control characters show
// as blanks, descriptions are cut to `descriptionWidth`, lines carry no trailing
// blanks.
void writeTable(std::ostream& out, const std::vector<InventoryRecord>& records,
                std::size_t descriptionWidth = kTableDescriptionWidth);

// `rows` (the first is normally a header) as aligned columns, the same way as
// writeTable: two blanks between columns, control characters shown as blanks, no
// trailing blanks. Short rows are padded with empty cells.
void writeColumns(std::ostream& out, const std::vector<std::vector<std::string>>& rows);

}  // namespace regscan

#endif
