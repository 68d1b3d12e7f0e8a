#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "images/segments.h"

namespace borvanusb {

// Motorola S-records: S0 to S3 and S5 to S9.

// Throws ImageError for what breaks the format: a wrong checksum or length, an unknown type, bytes
// at the same address, a count that is not that of the data records, anything after the start
// record. The last record must be a start record (S7, S8, S9) or a count (S5, S6): otherwise the
// file may have been cut off.
ImageContent ReadSRecord(std::span<const std::uint8_t> file);

// How long the addresses of the data records are. The start record goes with it: S19, S28, S37.
enum class SRecordForm { kS19, kS28, kS37 };

// The form of the shortest addresses that serve for all bytes.
SRecordForm ShortestSRecordForm(const Segments& segments);

// The last address that a form has.
std::uint32_t LastAddressOf(SRecordForm form);

// Records of 16 bytes, after an S0, before a count and a start record with the address 0; lines
// that end with CR LF. All addresses must be ones that the form has.
std::string SRecordText(const Segments& segments, SRecordForm form);

}  // namespace borvanusb
