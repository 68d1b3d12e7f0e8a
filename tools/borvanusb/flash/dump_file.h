#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace borvanusb {

// The files that `flash read` writes.
enum class DumpForm { kRaw, kText, kIntelHex, kSRecord };

// "raw", "text", "hex", "srec", as --format takes them and the JSON tells them.
std::string NameOf(DumpForm form);

// The form for a file: what --format says, unless it is empty, else the end of the name, else raw.
// Throws Failure kUsage for a form that is not written.
DumpForm DumpFormFor(const std::string& file, const std::string& format);

// Refuses addresses up to `last` that the file's records can't hold: those of .s19 have 16 bits,
// those of .s28 have 24. Throws Failure kUsage.
void CheckDumpAddresses(const std::string& file, DumpForm form, std::uint32_t last);

// Writes the bytes, which begin at `address`. Throws Failure kFile.
void WriteDump(const std::string& file, DumpForm form, std::uint32_t address,
               std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
