#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/list_entry.h"

namespace borvan {

// Reads one line of a list file, without its line end. Returns nullopt for a line without an entry:
// an empty one, a remark ("//"), one without a comma, or one whose address field is "0xfff2".
// Throws std::invalid_argument for a line with an address and no value.
std::optional<ListEntry> ParseListLine(std::string_view line);

// Reads a register or I2C list as Windows reads text files: lines end in LF or CR LF, and the byte
// 0x1A ends the file. If the file can't be opened, returns an empty list. Throws as ParseListLine
// does, and FileError if the file can't be read to its end.
std::vector<ListEntry> ReadListFile(const std::string& path);

}  // namespace borvan
