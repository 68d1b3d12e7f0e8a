#include "flash/dump_file.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/name_pattern.h"
#include "base/numbers.h"
#include "flash/text_dump.h"
#include "images/intel_hex.h"
#include "images/read_image.h"
#include "images/srecord.h"

namespace borvanusb {

namespace {

constexpr std::array<std::pair<DumpForm, std::string_view>, 4> kNames = {{
    {DumpForm::kRaw, "raw"},
    {DumpForm::kText, "text"},
    {DumpForm::kIntelHex, "hex"},
    {DumpForm::kSRecord, "srec"},
}};

// The S-record form that belongs to a file name's extension.
std::optional<SRecordForm> SRecordFormOf(const std::string& file) {
  constexpr std::array<std::pair<std::string_view, SRecordForm>, 6> kEndings = {{
      {"*.s19", SRecordForm::kS19},
      {"*.s1", SRecordForm::kS19},
      {"*.s28", SRecordForm::kS28},
      {"*.s2", SRecordForm::kS28},
      {"*.s37", SRecordForm::kS37},
      {"*.s3", SRecordForm::kS37},
  }};
  for (const auto& [ending, form] : kEndings) {
    if (MatchesPattern(ending, file)) {
      return form;
    }
  }
  return std::nullopt;
}

}  // namespace

std::string NameOf(DumpForm form) {
  return std::string(
      std::ranges::find(kNames, form, [](const auto& row) { return row.first; })->second);
}

DumpForm DumpFormFor(const std::string& file, const std::string& format) {
  const auto named = std::ranges::find(kNames, format, [](const auto& row) { return row.second; });
  if (named != kNames.end()) {
    return named->first;
  }
  if (file.ends_with(".txt")) {
    return DumpForm::kText;
  }
  switch (FormOfName(file).value_or(ImageForm::kRaw)) {
    case ImageForm::kIntelHex:
      return DumpForm::kIntelHex;
    case ImageForm::kSRecord:
      return DumpForm::kSRecord;
    case ImageForm::kElf:
      throw Failure(ExitCode::kUsage, Format("FILE: {}: ELF files are read, but not written", file),
                    "Give a name that ends in .bin, .hex or .srec, or say what it shall hold with "
                    "--format.");
    case ImageForm::kAuto:
    case ImageForm::kRaw:
      break;
  }
  return DumpForm::kRaw;
}

void CheckDumpAddresses(const std::string& file, DumpForm form, std::uint32_t last) {
  const auto records = SRecordFormOf(file);
  if (form == DumpForm::kSRecord && records && last > LastAddressOf(*records)) {
    throw Failure(ExitCode::kUsage,
                  Format("FILE: {}: its records reach up to the address {}, and the last one is {}",
                         file, Hex(LastAddressOf(*records)), Hex(last)),
                  "Give a name that ends in .srec or .s37, or .hex.");
  }
}

void WriteDump(const std::string& file, DumpForm form, std::uint32_t address,
               std::span<const std::uint8_t> bytes) {
  if (form == DumpForm::kRaw) {
    WriteWholeFile(file, bytes);
    return;
  }
  if (form == DumpForm::kText) {
    WriteWholeText(file, TextDump(address, bytes));
    return;
  }
  const Segments segments = {{address, {bytes.begin(), bytes.end()}}};
  if (form == DumpForm::kIntelHex) {
    WriteWholeText(file, IntelHexText(segments));
  } else {
    WriteWholeText(
        file, SRecordText(segments, SRecordFormOf(file).value_or(ShortestSRecordForm(segments))));
  }
}

}  // namespace borvanusb
