#include "output/printable.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/format.h"

namespace borvanusb {

namespace {

struct Character {
  std::size_t size = 0;   // bytes
  char32_t code = 0;      // code point, if valid
  bool is_valid = false;  // valid UTF-8
};

bool IsContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Returns the first character of a text, which must not be empty. If it is invalid, the result is
// its first byte.
Character FirstOf(std::string_view text) {
  struct Form {
    unsigned mask;
    unsigned mark;
    std::size_t size;
    char32_t lowest;  // lower code points must use a shorter form
  };
  constexpr std::array<Form, 4> kForms = {{{0x80, 0x00, 1, 0},
                                           {0xE0, 0xC0, 2, 0x80},
                                           {0xF0, 0xE0, 3, 0x800},
                                           {0xF8, 0xF0, 4, 0x10000}}};
  constexpr char32_t kHighest = 0x10FFFF;
  const auto first = static_cast<unsigned char>(text.front());
  for (const Form& form : kForms) {
    if ((first & form.mask) != form.mark || text.size() < form.size) {
      continue;
    }
    char32_t code = first & ~form.mask;
    bool is_valid = true;
    for (std::size_t i = 1; i < form.size; ++i) {
      is_valid = is_valid && IsContinuation(text[i]);
      code = code << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const bool is_surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (is_valid && code >= form.lowest && code <= kHighest && !is_surrogate) {
      return {form.size, code, true};
    }
  }
  return {1, 0, false};
}

// Whether a terminal interprets the character instead of showing it.
bool IsObeyed(char32_t code) {
  const bool is_control = code < 0x20 || (code >= 0x7F && code <= 0x9F);
  const bool ends_line = code == 0x2028 || code == 0x2029;
  const bool turns = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  return is_control || ends_line || turns;
}

std::string Escape(char32_t code) {
  return Format("\\u{:04x}", static_cast<std::uint32_t>(code));
}

}  // namespace

std::string Printable(std::string_view text) {
  std::string row;
  while (!text.empty()) {
    const Character character = FirstOf(text);
    if (character.is_valid && !IsObeyed(character.code)) {
      row += text.substr(0, character.size);
    } else {
      row += '?';
    }
    text.remove_prefix(character.size);
  }
  return row;
}

std::string PrintableJson(std::string_view json) {
  std::string escaped;
  while (!json.empty()) {
    const Character character = FirstOf(json);
    // Characters below 0x20 are blanks between values. JSON strings have them escaped already.
    if (character.is_valid && character.code >= 0x20 && IsObeyed(character.code)) {
      escaped += Escape(character.code);
    } else {
      escaped += json.substr(0, character.size);
    }
    json.remove_prefix(character.size);
  }
  return escaped;
}

}  // namespace borvanusb
