#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace borvanusb {

// The files that `flash read` writes.
enum class DumpForm { kRaw, kText, kIntelHex, kSRecord };

// "raw", "text", "hex" and "srec", the values of --format and in the JSON.
std::string NameOf(DumpForm form);

// The form for a file: the value of `format` unless empty, else the one that belongs to the file
// name's extension, else raw. Throws Failure kUsage for a form that can't be written.
DumpForm DumpFormFor(const std::string& file, const std::string& format);

// Throws Failure kUsage if the file's records can't hold addresses up to `last`: those of .s19 have
// 16 bits, those of .s28 have 24.
void CheckDumpAddresses(const std::string& file, DumpForm form, std::uint32_t last);

// Writes a file with these bytes, the first at `address`. Throws Failure kFile.
void WriteDump(const std::string& file, DumpForm form, std::uint32_t address,
               std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
