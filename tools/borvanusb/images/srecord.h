#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "images/segments.h"

namespace borvanusb {

// Motorola S-records: S0 to S3 and S5 to S9.

// Throws ImageError if the file violates the format: wrong checksum or length, unknown type,
// several bytes for the same address, a count that differs from the number of data records,
// anything after the start record. The last record must be a start record (S7, S8, S9) or a count
// (S5, S6); otherwise the file may be truncated.
ImageContent ReadSRecord(std::span<const std::uint8_t> file);

// The address size of the data records: 16, 24 or 32 bits. It also determines the start record.
enum class SRecordForm { kS19, kS28, kS37 };

// The form with the shortest addresses that reach all bytes.
SRecordForm ShortestSRecordForm(const Segments& segments);

// The highest address of a form.
std::uint32_t LastAddressOf(SRecordForm form);

// Writes an S0, data records of 16 bytes, a count and a start record with the address 0. Lines end
// with CR LF. The form must reach all addresses.
std::string SRecordText(const Segments& segments, SRecordForm form);

}  // namespace borvanusb
