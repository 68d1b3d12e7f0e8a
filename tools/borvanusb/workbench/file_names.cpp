#include "workbench/file_names.h"

#include <algorithm>
#include <array>

namespace borvanusb {

namespace {

// The maximum length of a name in UTF-8, in bytes. With the folder, the path stays below 260
// characters.
constexpr std::size_t kLongestName = 120;

constexpr std::array<std::string_view, 7> kDevices = {"con",    "prn",     "aux",   "nul",
                                                      "conin$", "conout$", "clock$"};

char Lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                              : character;
}

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

// Windows treats the superscripts 1, 2 and 3 as digits in port names such as COM1.
bool IsSuperscript(std::string_view text) {
  return text == "\xC2\xB9" || text == "\xC2\xB2" || text == "\xC2\xB3";
}

// For device names, Windows only considers the part before the first dot, without trailing blanks.
bool IsDevice(std::string_view name) {
  std::string stem(name.substr(0, name.find('.')));
  while (!stem.empty() && stem.back() == ' ') {
    stem.pop_back();
  }
  std::ranges::transform(stem, stem.begin(), Lower);
  if (std::ranges::find(kDevices, stem) != kDevices.end()) {
    return true;
  }
  const std::string_view number =
      std::string_view(stem).substr(std::min<std::size_t>(3, stem.size()));
  const bool is_port = stem.starts_with("com") || stem.starts_with("lpt");
  return is_port && ((number.size() == 1 && IsDigit(number.front())) || IsSuperscript(number));
}

// Whether the bytes are valid UTF-8: no overlong encodings, no surrogates.
bool IsUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const std::size_t length = byte < 0x80U   ? 1U
                               : byte < 0xC2U ? 0U
                               : byte < 0xE0U ? 2U
                               : byte < 0xF0U ? 3U
                               : byte < 0xF5U ? 4U
                                              : 0U;
    if (length == 0 || i + length > text.size()) {
      return false;
    }
    for (std::size_t k = 1; k < length; ++k) {
      if ((static_cast<unsigned char>(text[i + k]) & 0xC0U) != 0x80U) {
        return false;
      }
    }
    const auto second = length > 1 ? static_cast<unsigned char>(text[i + 1]) : 0U;
    if ((byte == 0xE0U && second < 0xA0U) || (byte == 0xEDU && second > 0x9FU) ||
        (byte == 0xF0U && second < 0x90U) || (byte == 0xF4U && second > 0x8FU)) {
      return false;
    }
    i += length;
  }
  return true;
}

}  // namespace

std::string ProblemOfPlainName(std::string_view name) {
  constexpr std::string_view kForbidden = "/\\:*?\"<>|";
  if (name.empty()) {
    return "is empty";
  }
  if (name.size() > kLongestName) {
    return "is longer than 120 bytes";
  }
  if (!IsUtf8(name)) {
    return "is not UTF-8";
  }
  if (std::ranges::any_of(name, [](char c) {
        return static_cast<unsigned char>(c) < 0x20U || static_cast<unsigned char>(c) == 0x7FU;
      })) {
    return "has a control character";
  }
  if (name.find_first_of(kForbidden) != std::string_view::npos) {
    return R"(has one of the characters / \ : * ? " < > |; a plain name is needed, such as firmware.bin)";
  }
  if (name.front() == ' ' || name.front() == '-') {
    return "begins with a blank or a minus sign";
  }
  if (name.back() == ' ' || name.back() == '.') {
    return "ends with a blank or a dot";
  }
  return IsDevice(name) ? "is the name of a device of Windows" : "";
}

std::string WithPlainNames(std::string_view text, std::string_view folder) {
  const auto spelled = [](char c) {
    if (c == '/') {
      return '\\';
    }
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  const auto same = [&](char a, char b) { return spelled(a) == spelled(b); };
  std::string plain;
  while (!folder.empty()) {
    const auto* const found =
        std::search(text.begin(), text.end(), folder.begin(), folder.end(), same);
    const auto before = static_cast<std::size_t>(found - text.begin());
    const std::size_t after = before + folder.size();
    if (found == text.end() || after >= text.size()) {
      break;
    }
    const bool is_file = spelled(text[after]) == '\\';
    plain += text.substr(0, is_file ? before : after);
    text.remove_prefix(is_file ? after + 1 : after);
  }
  return plain + std::string(text);
}

}  // namespace borvanusb
