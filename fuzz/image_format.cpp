// Detection of file formats, compared with an independent implementation; and files of these
// formats, made from the input, which must be recognised.

#include <cctype>
#include <optional>
#include <string>
#include <vector>

#include "flash/text_dump.h"
#include "images/image_format.h"
#include "support/check.h"
#include "support/input.h"

namespace {
using namespace borvanusb;

using borvan_fuzz::Check;
using borvan_fuzz::Input;

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLookedAt = 16384;
constexpr std::size_t kLines = 8;

bool AllDigits(const std::string& text) {
  for (const char character : text) {
    if (std::isxdigit(static_cast<unsigned char>(character)) == 0) {
      return false;
    }
  }
  return true;
}

unsigned ByteAt(const std::string& digits, std::size_t index) {
  return static_cast<unsigned>(std::stoul(digits.substr(index * 2, 2), nullptr, 16));
}

unsigned SumOf(const std::string& digits) {
  unsigned sum = 0;
  for (std::size_t i = 0; i < digits.size() / 2; ++i) {
    sum += ByteAt(digits, i);
  }
  return sum & 0xFFU;
}

bool ModelHex(const std::string& line) {
  const std::string digits = line.substr(1);
  if (line[0] != ':' || digits.size() % 2 != 0 || digits.size() < 10 || !AllDigits(digits)) {
    return false;
  }
  const unsigned length = ByteAt(digits, 0);
  const unsigned type = ByteAt(digits, 3);
  const bool fits = type == 0 || (type == 1 && length == 0) ||
                    ((type == 2 || type == 4) && length == 2) ||
                    ((type == 3 || type == 5) && length == 4);
  return fits && digits.size() == 2 * (length + 5) && SumOf(digits) == 0;
}

bool ModelSRecord(const std::string& line) {
  if (line.size() < 2 || line[0] != 'S') {
    return false;
  }
  const std::string digits = line.substr(2);
  if (digits.size() % 2 != 0 || digits.size() < 2 || !AllDigits(digits)) {
    return false;
  }
  const std::string with_two = "0159";
  const std::string with_three = "268";
  const std::string with_four = "37";
  const unsigned length = ByteAt(digits, 0);
  unsigned least = 0;
  if (with_two.find(line[1]) != std::string::npos) {
    least = 3;
  } else if (with_three.find(line[1]) != std::string::npos) {
    least = 4;
  } else if (with_four.find(line[1]) != std::string::npos) {
    least = 5;
  } else {
    return false;
  }
  return length >= least && digits.size() == 2 * (length + 1) && SumOf(digits) == 0xFF;
}

bool ModelDump(const std::string& line) {
  if (line.size() != 35 || !AllDigits(line.substr(0, 8)) || line.substr(8, 2) != "h:" ||
      line.back() != ';') {
    return false;
  }
  for (std::size_t place = 10; place < 34; place += 3) {
    if (line[place] != ' ' || !AllDigits(line.substr(place + 1, 2))) {
      return false;
    }
  }
  return true;
}

std::optional<ImageFormat> ModelOfText(std::string text) {
  if (text.size() > kLookedAt) {
    text.resize(kLookedAt);
    while (!text.empty() && text.back() != '\r' && text.back() != '\n') {
      text.pop_back();
    }
  }
  if (text.substr(0, 3) == "\xEF\xBB\xBF") {
    text.erase(0, 3);
  }
  text += '\n';
  std::string line;
  std::size_t lines = 0;
  for (const char character : text) {
    const bool ends = character == '\n' || character == '\r';
    if (!ends) {
      line += character;
      continue;
    }
    for (const char one : line) {
      if ((one < 0x20 || one > 0x7E) && one != '\t') {
        return std::nullopt;
      }
    }
    while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) {
      line.pop_back();
    }
    if (!line.empty()) {
      if (ModelHex(line)) {
        return ImageFormat::kIntelHex;
      }
      if (ModelSRecord(line)) {
        return ImageFormat::kSRecord;
      }
      if (ModelDump(line)) {
        return ImageFormat::kTextDump;
      }
      if (++lines == kLines) {
        return std::nullopt;
      }
    }
    line.clear();
  }
  return std::nullopt;
}

std::optional<ImageFormat> Model(const Bytes& bytes) {
  const std::string text(bytes.begin(), bytes.end());
  if (text.size() >= 52 &&
      text.substr(0, 4) ==
          "\x7F"
          "ELF" &&
      (text[4] == 1 || text[4] == 2) && (text[5] == 1 || text[5] == 2) && text[6] == 1) {
    return ImageFormat::kElf;
  }
  if (text.size() >= 512 && text.substr(0, 8) == "UF2\n\x57\x51\x5D\x9E" &&
      text.substr(508, 4) == "\x30\x6F\xB1\x0A") {
    return ImageFormat::kUf2;
  }
  return ModelOfText(text);
}

std::string Digits(const Bytes& bytes, bool small) {
  const std::string all = small ? "0123456789abcdef" : "0123456789ABCDEF";
  std::string digits;
  for (const std::uint8_t byte : bytes) {
    digits += all[byte >> 4U];
    digits += all[byte & 0xFU];
  }
  return digits;
}

std::uint8_t Sum(const Bytes& bytes) {
  unsigned sum = 0;
  for (const std::uint8_t byte : bytes) {
    sum += byte;
  }
  return static_cast<std::uint8_t>(sum);
}

void CheckFormat(const std::string& text, std::optional<ImageFormat> format, const char* what) {
  Check(RecogniseFormat(Bytes(text.begin(), text.end())) == format, what);
}

void CheckMade(Input input) {
  const bool small = input.Choice(2) == 1;
  const std::uint32_t address = input.Word();
  const Bytes data = input.Bytes(16);
  const auto high = static_cast<std::uint8_t>(address >> 8U);
  const auto low = static_cast<std::uint8_t>(address);

  Bytes record = {static_cast<std::uint8_t>(data.size()), high, low, 0};
  record.insert(record.end(), data.begin(), data.end());
  record.push_back(static_cast<std::uint8_t>(0U - Sum(record)));
  CheckFormat(":" + Digits(record, small) + "\r\n", ImageFormat::kIntelHex, "a HEX record");
  ++record.back();
  CheckFormat(":" + Digits(record, small), std::nullopt, "a HEX record with a wrong checksum");

  record = {static_cast<std::uint8_t>(data.size() + 3), high, low};
  record.insert(record.end(), data.begin(), data.end());
  record.push_back(static_cast<std::uint8_t>(0xFFU - Sum(record)));
  CheckFormat("S1" + Digits(record, small), ImageFormat::kSRecord, "an S-record");
  ++record.back();
  CheckFormat("S1" + Digits(record, small), std::nullopt, "an S-record with a wrong checksum");

  if (!data.empty()) {
    CheckFormat(TextDump(address, data), ImageFormat::kTextDump, "a text dump");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes bytes(data, data + size);
  Check(RecogniseFormat(bytes) == Model(bytes), "another format than the model's");
  CheckMade(Input(data, size));
  return 0;
}
