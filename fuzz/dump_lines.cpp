// Dumps as text, read back: flash dumps by an independent reader, lists by the list reader.

#include <algorithm>
#include <string>
#include <vector>

#include "files/flash_dump_file.h"
#include "files/list_dump_file.h"
#include "files/list_file.h"
#include "support/check.h"
#include "support/lists.h"
#include "support/memory_file.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;

using Bytes = std::vector<std::uint8_t>;
using List = std::vector<borvan::ListEntry>;

constexpr std::size_t kLine = 37;

borvan_fuzz::MemoryFile& TheFile() {
  static auto& file = *new borvan_fuzz::MemoryFile;
  return file;
}

template <typename Write>
std::string Written(const Write& write) {
  TheFile().Put({});
  {
    auto file = borvan::File::OpenToWrite(TheFile().Path());
    Check(file.has_value(), "the file can't be opened");
    write(*file);
  }
  return TheFile().Text();
}

std::uint32_t Number(const std::string& text, std::size_t at, std::size_t digits) {
  const std::string number = text.substr(at, digits);
  Check(number.find_first_not_of("0123456789abcdef") == std::string::npos, "digits of a dump");
  return static_cast<std::uint32_t>(std::stoul(number, nullptr, 16));
}

// "00001008h: 00 01 02 03 04 05 06 07;" CR LF, and so on.
void CheckFlashDump(const Bytes& bytes, std::uint32_t start, std::uint32_t end) {
  const std::string text =
      Written([&](borvan::File& file) { borvan::WriteTextDump(file, bytes, start, end); });
  const std::size_t all = (bytes.size() + 7) / 8;
  const std::size_t lines = std::min<std::size_t>(all, std::size_t{end / 8} + 1);
  CheckEqual(text.size(), lines * kLine, "length of a flash dump");
  for (std::size_t i = 0; i < lines; ++i) {
    const std::string line = text.substr(i * kLine, kLine);
    CheckEqual(Number(line, 0, 8), static_cast<std::uint32_t>(start + 8 * i), "address of a line");
    CheckEqual(line.substr(8, 3), "h: ", "behind an address");
    for (std::size_t k = 0; k < 8; ++k) {
      const std::size_t at = 8 * i + k;
      CheckEqual(Number(line, 11 + 3 * k, 2), at < bytes.size() ? bytes[at] : 0, "a byte");
      CheckEqual(line.substr(13 + 3 * k, 1), k < 7 ? " " : ";", "behind a byte");
    }
    CheckEqual(line.substr(35), "\r\n", "end of a line");
  }
}

// A list is unchanged after dumping and loading, except for the address that lists can't contain.
void CheckListDumps(const List& list, std::uint32_t mode) {
  List expected;
  std::copy_if(list.begin(), list.end(), std::back_inserter(expected),
               [](const borvan::ListEntry& entry) { return entry.address != 0xFFF2; });
  Written([&](borvan::File& file) { borvan::WriteRegisterLines(file, list); });
  Check(borvan::ReadListFile(TheFile().Path()) == expected, "a register dump loads back");

  Written([&](borvan::File& file) { borvan::WriteI2cLines(file, list, mode); });
  Check(borvan::ReadListFile(TheFile().Path()) == (mode <= 2 ? expected : List{}),
        "an I2C dump loads back");

  const std::string raw = Written([&](borvan::File& file) { borvan::WriteListValues(file, list); });
  CheckEqual(raw.size(), list.size(), "raw values");
  for (std::size_t i = 0; i < raw.size(); ++i) {
    CheckEqual(static_cast<std::uint8_t>(raw[i]), list[i].value & 0xFF, "a raw value");
  }
}

// The name ends in ".txt", in lower case.
void CheckName(const std::string& name) {
  const bool text = name == "txt" || name.ends_with(".txt");
  Check(borvan::IsTextFileName(name) == text, "whether a name is a text's");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  borvan_fuzz::Input input(data, size);
  const std::uint32_t start = input.Word();
  const std::uint32_t end = input.Word();
  const std::uint32_t mode = input.Choice(8);
  CheckName(input.Text());
  const Bytes bytes = input.Rest();
  CheckFlashDump(bytes, start, end);
  borvan_fuzz::Input list(bytes.data(), bytes.size());
  CheckListDumps(borvan_fuzz::TakeList(list), mode);
  return 0;
}
