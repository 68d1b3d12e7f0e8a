#pragma once

// The files that store the results of run reads: lines that the list reader can read, or raw
// values.

#include <cstdint>
#include <span>
#include <string>

#include "base/list_entry.h"
#include "files/file.h"

namespace borvan {

// Appends "0x%04x, 0x%02x,", with its line end as on disk. The blank after the first comma is
// deliberate: register files have it, I2C files don't.
void AppendRegisterLine(std::string& text, const ListEntry& entry);

// Appends "0x%04x,0x%02x," in the modes 0 and 1, "0x%04x,0x%04x," in mode 2, and nothing in others:
// there is no text form for 32-bit addresses.
void AppendI2cLine(std::string& text, const ListEntry& entry, std::uint32_t mode);

// Write a run as lines, or as one byte per entry, the low byte of the value. All throw FileError.
void WriteRegisterLines(File& file, std::span<const ListEntry> list);
void WriteI2cLines(File& file, std::span<const ListEntry> list, std::uint32_t mode);
void WriteListValues(File& file, std::span<const ListEntry> list);

}  // namespace borvan
