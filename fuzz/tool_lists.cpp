// The tool's reader of lists and its checks: the library must read a valid list, entry by entry,
// exactly as the tool does. The first byte chooses the device for I2C lists that do not name their
// own.

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/width_modes.h"
#include "files/list_file.h"
#include "i2c/i2c_list.h"
#include "registers/list_text.h"
#include "registers/register_list.h"
#include "support/check.h"
#include "support/input.h"
#include "support/memory_file.h"
#include "support/terminal_text.h"

namespace {
using namespace borvanusb;

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::CheckOneLine;

using Entries = std::vector<ListEntry>;

void CheckProblems(const std::vector<ListProblem>& problems, std::uint64_t lines) {
  std::uint64_t last = 0;
  for (const ListProblem& problem : problems) {
    CheckOneLine(problem.text, "a list's problem");
    Check(problem.line <= lines, "a problem behind the last line");
    Check(last != 0 ? problem.line == 0 || problem.line >= last : true, "problems out of order");
    last = problem.line;
  }
}

std::uint64_t LinesOf(const std::string& text) {
  std::uint64_t lines = 1;
  for (const char character : text) {
    lines += character == '\n' ? 1 : 0;
  }
  return lines;
}

// The library must read `text` as these entries.
void CheckLibraryReads(const std::string& text, const Entries& expected, const std::string& what) {
  static auto& file = *new borvan_fuzz::MemoryFile;
  file.Put({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  std::vector<borvan::ListEntry> read;
  try {
    read = borvan::ReadListFile(file.Path());
  } catch (const std::invalid_argument&) {
    borvan_fuzz::Fail(what + ": the library refuses the list");
  }
  CheckEqual(read.size(), expected.size(), what + ": the number of entries");
  for (std::size_t i = 0; i < read.size(); ++i) {
    const std::string place = what + ": entry " + std::to_string(i);
    CheckEqual(read[i].address, expected[i].address, place + ": address");
    CheckEqual(read[i].value, expected[i].value, place + ": value");
  }
}

void CheckReading(const std::string& text) {
  const ListText list = ReadListText(text);
  const std::uint64_t lines = LinesOf(text);
  CheckProblems(list.problems, lines);
  CheckProblems(list.remarks, lines);
  std::uint64_t last = 0;
  for (const ListEntry& entry : list.entries) {
    Check(entry.line > last && entry.line <= lines, "an entry on an impossible line");
    last = entry.line;
  }
  // The library does not support a byte-order mark; the tool sends lists without it.
  if (list.problems.empty() && !text.starts_with("\xEF\xBB\xBF")) {
    CheckLibraryReads(text, list.entries, "a list as it stands");
  }
}

void CheckRegisters(const std::string& text) {
  const CheckedRegisterList checked = CheckRegisterList(text);
  CheckProblems(checked.list.problems, LinesOf(text));
  CheckProblems(checked.list.remarks, LinesOf(text));
  if (!checked.list.problems.empty()) {
    return;
  }
  const std::string sent = RegisterListText(checked.list.entries);
  CheckLibraryReads(sent, checked.list.entries, "a register list as sent");
  const CheckedRegisterList again = CheckRegisterList(sent);
  Check(again.list.problems.empty(), "a register list that was sent is refused");
  CheckEqual(again.registers, checked.registers, "the registers of a list that was sent");
  Check(checked.registers > 0 && checked.registers <= checked.list.entries.size(),
        "an impossible number of registers");
}

void CheckI2c(const std::string& text, const std::optional<I2cTarget>& opening) {
  const CheckedI2cList checked = CheckI2cList(text, opening);
  CheckProblems(checked.list.problems, LinesOf(text));
  CheckProblems(checked.list.remarks, LinesOf(text));
  if (!checked.list.problems.empty()) {
    return;
  }
  Check(checked.opens_itself || opening, "an I2C list without a device passes");
  Entries expected = checked.list.entries;
  std::optional<I2cTarget> in_front;
  if (!checked.opens_itself) {
    const auto code = WidthModeOf(opening->mode).list_code;
    if (!code) {
      return;  // sent entry by entry
    }
    in_front = opening;
    expected.insert(expected.begin(),
                    {{kSlaveMarker, opening->slave, 0}, {kWidthMarker, *code, 0}});
  }
  const std::string sent = I2cListText(checked.list.entries, in_front);
  CheckLibraryReads(sent, expected, "an I2C list as sent");
  const CheckedI2cList again = CheckI2cList(sent, std::nullopt);
  Check(again.list.problems.empty(), "an I2C list that was sent is refused");
  CheckEqual(again.registers, checked.registers, "the registers of a list that was sent");
}

// A dump of any registers can be loaded again, except for registers at a marker's address.
void CheckDump(const std::string& text, std::int32_t mode) {
  borvan_fuzz::Input input(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  const std::uint32_t first = input.Word() & 0xFFFF;
  std::vector<std::uint32_t> values;
  while (!input.Empty() && first + values.size() <= 0xFFFF && values.size() < 64) {
    values.push_back(input.Byte());
  }
  if (values.empty()) {
    return;
  }
  const Range range{first, static_cast<std::uint32_t>(first + values.size() - 1)};
  for (const std::string& dump : {RegisterDumpText(range, values),
                                  I2cDumpText({.slave = 0x6C, .mode = mode}, range, values)}) {
    const ListText list = ReadListText(dump);
    Check(list.problems.empty() && list.remarks.empty(), "a dump does not load back");
    for (const ListEntry& entry : list.entries) {
      const bool marker = entry.line <= 2;
      Check(marker || entry.value == values.at(entry.address - first), "a dump with another value");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  const std::int32_t mode = data[0] % 7;
  const std::string text(data + 1, data + size);
  CheckReading(text);
  CheckRegisters(text);
  CheckI2c(text, std::nullopt);
  if (mode < 6) {
    I2cTarget target;
    target.slave = data[0];
    target.mode = mode;
    CheckI2c(text, target);
    CheckDump(text, mode);
  }
  return 0;
}
