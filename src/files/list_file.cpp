#include "files/list_file.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "base/hexadecimal_text.h"
#include "files/file.h"

namespace borvan {
namespace {

constexpr std::string_view kRemark = "//";
constexpr std::string_view kDroppedAddress = "0xfff2";
constexpr std::uint32_t kDroppedNumber = 0xFFF2;
constexpr char kEndOfFile = 0x1A;

// The bytes read at a time, enough to make the cost of the runtime's call negligible.
constexpr std::size_t kChunkSize = std::size_t{256} * 1024;

constexpr bool IsWhiteSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsWhiteSpace(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && IsWhiteSpace(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

bool IsDroppedAddress(std::string_view text) {
  if (text.size() != kDroppedAddress.size()) {
    return false;
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c =
        text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] - 'A' + 'a') : text[i];
    if (c != kDroppedAddress[i]) {
      return false;
    }
  }
  return true;
}

std::size_t FindComma(std::string_view text) {
  const void* const found = std::memchr(text.data(), ',', text.size());
  return found == nullptr ? std::string_view::npos
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

// Parses a field before a comma. Ignores what comes before its first "0x".
std::uint32_t ParseField(std::string_view field) {
  const std::string_view text = Trim(field);
  for (std::size_t at = 0; at + 1 < text.size(); ++at) {
    if (text[at] == '0' && text[at + 1] == 'x') {
      return ParseUnsignedLong(text.substr(at + 2));
    }
  }
  return ParseUnsignedLong(text);
}

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> kDigitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::uint8_t digit = 0; digit < 10; ++digit) {
    values['0' + digit] = digit;
  }
  for (std::uint8_t digit = 10; digit < 16; ++digit) {
    values['a' + digit - 10] = digit;
    values['A' + digit - 10] = digit;
  }
  return values;
}();

// Reads a number of 1 to 8 digits, with or without "0x". Returns where it ends, or null.
const char* ReadPlainNumber(const char* at, std::uint32_t& number) {
  constexpr int kMostDigits = 8;
  if (at[0] == '0' && at[1] == 'x') {
    at += 2;
  }
  const char* const first = at;
  std::uint32_t value = 0;
  for (; at - first < kMostDigits; ++at) {
    const std::uint8_t digit = kDigitValues[static_cast<std::uint8_t>(*at)];
    if (digit == kNoDigit) {
      break;
    }
    value = value << 4U | digit;
  }
  number = value;
  return at == first ? nullptr : at;
}

// "0x12345678, 0x12345678," with CR LF.
constexpr std::size_t kLongestPlainLine = 25;

// Reads a line in the form that nearly all lines have: two numbers, as the writers of lists write
// them, and a line end. Returns the start of the next line, or null for a line that needs the full
// parser. At least kLongestPlainLine bytes must be readable.
const char* ReadPlainLine(const char* at, ListEntry& entry) {
  at = ReadPlainNumber(at, entry.address);
  if (at == nullptr || *at != ',' || entry.address == kDroppedNumber) {
    return nullptr;
  }
  ++at;
  at += *at == ' ' ? 1 : 0;
  at = ReadPlainNumber(at, entry.value);
  if (at == nullptr) {
    return nullptr;
  }
  at += *at == ',' ? 1 : 0;
  at += *at == '\r' ? 1 : 0;
  return *at == '\n' ? at + 1 : nullptr;
}

// Collects a line that is spread over several chunks. Drops what can't matter, so that a file of
// blanks takes no memory: white space at the start of the line, repeated white space, and
// everything after the second field.
class PartialLine {
 public:
  void Append(std::string_view text) {
    for (const char c : text) {
      if (commas_ == 2) {
        return;
      }
      const bool blank = IsWhiteSpace(c);
      if (blank && (line_.empty() || IsWhiteSpace(line_.back()))) {
        continue;
      }
      commas_ += c == ',' ? 1 : 0;
      line_.push_back(c);
      if (line_ == kRemark) {
        commas_ = 2;  // the rest of a remark is ignored
      }
    }
  }

  const std::string& Text() const { return line_; }

  void Clear() {
    line_.clear();
    commas_ = 0;
  }

 private:
  std::string line_;
  int commas_ = 0;
};

// A growing list whose parts are joined at the end: growing a single vector would need half as much
// memory again.
class ListBuilder {
 public:
  void Add(const ListEntry& entry) {
    if (parts_.empty() || parts_.back().size() == kPartSize) {
      parts_.emplace_back().reserve(kPartSize);
    }
    parts_.back().push_back(entry);
    ++size_;
  }

  std::vector<ListEntry> Join() {
    std::vector<ListEntry> list;
    list.reserve(size_);
    for (std::vector<ListEntry>& part : parts_) {
      list.insert(list.end(), part.begin(), part.end());
      std::vector<ListEntry>().swap(part);
    }
    return list;
  }

 private:
  static constexpr std::size_t kPartSize = std::size_t{16} * 1024;

  std::vector<std::vector<ListEntry>> parts_;
  std::size_t size_ = 0;
};

// Reads the file chunk by chunk and collects the entries of its lines.
class ListReader {
 public:
  void TakeChunk(std::string_view chunk) {
    if (partial_.Text().empty()) {
      TakePlainLines(chunk);
    }
    std::size_t line_end = 0;
    while ((line_end = FindLineEnd(chunk)) != std::string_view::npos) {
      const std::string_view line = chunk.substr(0, line_end);
      if (partial_.Text().empty()) {
        TakeLine(line);
      } else {
        partial_.Append(line);
        TakePartialLine();
      }
      chunk.remove_prefix(line_end + 1);
      TakePlainLines(chunk);
    }
    partial_.Append(chunk);
  }

  std::vector<ListEntry> Finish() {
    TakePartialLine();
    return list_.Join();
  }

 private:
  static std::size_t FindLineEnd(std::string_view text) {
    const void* const found = text.empty() ? nullptr : std::memchr(text.data(), '\n', text.size());
    return found == nullptr
               ? std::string_view::npos
               : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
  }

  // Takes the lines at the start of `text` that do not need the full parser.
  void TakePlainLines(std::string_view& text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    ListEntry entry;
    while (static_cast<std::size_t>(end - at) >= kLongestPlainLine) {
      const char* const next = ReadPlainLine(at, entry);
      if (next == nullptr) {
        break;
      }
      list_.Add(entry);
      at = next;
    }
    text.remove_prefix(static_cast<std::size_t>(at - text.data()));
  }

  void TakeLine(std::string_view line) {
    if (const auto entry = ParseListLine(line)) {
      list_.Add(*entry);
    }
  }

  void TakePartialLine() {
    TakeLine(partial_.Text());
    partial_.Clear();
  }

  PartialLine partial_;
  ListBuilder list_;
};

}  // namespace

std::optional<ListEntry> ParseListLine(std::string_view line) {
  const std::string_view text = Trim(line);
  if (text.empty() || text.starts_with(kRemark)) {
    return std::nullopt;
  }
  const std::size_t first_comma = FindComma(text);
  if (first_comma == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view address = text.substr(0, first_comma);
  // Compared without trimming: a line with a blank before the comma is kept.
  if (IsDroppedAddress(address)) {
    return std::nullopt;
  }
  const std::string_view rest = text.substr(first_comma + 1);
  const std::size_t second_comma = FindComma(rest);
  if (second_comma != std::string_view::npos) {
    return ListEntry{ParseField(address), ParseField(rest.substr(0, second_comma))};
  }
  const std::string_view last = Trim(rest);
  if (last.empty()) {
    throw std::invalid_argument("a line of the list has an address and no value");
  }
  return ListEntry{ParseField(address), ParseUnsignedLong(last)};
}

std::vector<ListEntry> ReadListFile(const std::string& path) {
  auto file = File::OpenToRead(path);
  if (!file.has_value()) {
    return {};
  }
  std::vector<std::uint8_t> bytes(kChunkSize);
  ListReader reader;
  while (const std::size_t read = file->ReadSome(bytes)) {
    std::string_view chunk(reinterpret_cast<const char*>(bytes.data()), read);
    const std::size_t end = chunk.find(kEndOfFile);
    reader.TakeChunk(chunk.substr(0, end));
    if (end != std::string_view::npos) {
      break;
    }
  }
  return reader.Finish();
}

}  // namespace borvan
