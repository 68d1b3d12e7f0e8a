#include "maps/register_map.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "maps/map_storage.h"

namespace borvanusb {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 16U;

void AppendCharacter(std::uint32_t code, std::string& text) {
  constexpr std::uint32_t kHighest = 0x10FFFF;
  if (code == 0 || code > kHighest || (code >= 0xD800 && code <= 0xDFFF)) {
    text += '?';
  } else if (code < 0x80) {
    text += static_cast<char>(code);
  } else {
    // UTF-8: the leading byte gives the number of the following bytes, which hold six bits each.
    const int following = code < 0x800 ? 1 : (code < 0x10000 ? 2 : 3);
    constexpr std::array<std::uint32_t, 4> kLeading = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLeading.at(static_cast<std::size_t>(following)) |
                              code >> (6U * static_cast<unsigned>(following)));
    for (int i = following; i-- > 0;) {
      text += static_cast<char>(0x80U | (code >> (6U * static_cast<unsigned>(i)) & 0x3FU));
    }
  }
}

// Appends the character of a reference at the beginning of `text`. Returns the length of the
// reference, 0 if there is none.
std::size_t AppendReference(std::string_view text, std::string& plain) {
  constexpr std::pair<std::string_view, char> kEntities[] = {
      {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
  for (const auto& [entity, character] : kEntities) {
    if (text.starts_with(entity)) {
      plain += character;
      return entity.size();
    }
  }
  const std::size_t end = text.find(';');
  if (!text.starts_with("&#") || end == std::string_view::npos) {
    return 0;
  }
  const bool hex = text[2] == 'x';
  std::uint32_t code = 0;
  const auto result =
      std::from_chars(text.data() + (hex ? 3 : 2), text.data() + end, code, hex ? 16 : 10);
  AppendCharacter(result.ec == std::errc() ? code : 0, plain);
  return end + 1;
}

}  // namespace

char* TextArena::Take(std::size_t size) {
  if (size > left_) {
    const std::size_t block = std::max(size, kBlock);
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(block));
    next_ = blocks_.back().get();
    left_ = block;
  }
  char* const taken = next_;
  next_ += size;
  left_ -= size;
  return taken;
}

std::string_view TextArena::Copy(std::string_view text) {
  char* const copy = Take(text.size());
  std::copy(text.begin(), text.end(), copy);
  return {copy, text.size()};
}

std::string PlainText(MapText text, std::string_view index) {
  std::string plain;
  plain.reserve(text.raw.size());
  for (std::size_t i = 0; i < text.raw.size();) {
    const char character = text.raw[i];
    if (character == ' ' || character == '\t' || character == '\r' || character == '\n') {
      if (!plain.empty() && plain.back() != ' ') {
        plain += ' ';
      }
      ++i;
      continue;
    }
    if (const std::size_t length =
            character == '&' ? AppendReference(text.raw.substr(i), plain) : 0) {
      i += length;
    } else if (!index.empty() && text.raw.substr(i).starts_with("%s")) {
      plain += index;
      i += 2;
    } else {
      plain += character;
      ++i;
    }
  }
  while (plain.ends_with(' ')) {
    plain.pop_back();
  }
  return plain;
}

RegisterMap::RegisterMap() : storage(std::make_unique<MapStorage>()) {}
RegisterMap::RegisterMap(RegisterMap&&) noexcept = default;
RegisterMap& RegisterMap::operator=(RegisterMap&&) noexcept = default;
RegisterMap::~RegisterMap() = default;

std::span<const MapRegister> RegisterMap::RegistersOf(const MapPeripheral& peripheral) const {
  return std::span(registers).subspan(peripheral.first_register, peripheral.register_count);
}

std::uint64_t RegisterMap::LineOf(std::uint32_t offset) const {
  std::vector<std::uint32_t>& ends = storage->line_ends;
  if (ends.empty()) {
    for (std::size_t i = storage->text.find('\n'); i != std::string::npos;
         i = storage->text.find('\n', i + 1)) {
      ends.push_back(static_cast<std::uint32_t>(i));
    }
    ends.push_back(static_cast<std::uint32_t>(storage->text.size()));
  }
  return 1 + static_cast<std::uint64_t>(std::lower_bound(ends.begin(), ends.end(), offset) -
                                        ends.begin());
}

std::vector<ListProblem> RegisterMap::Doubts() const {
  std::vector<ListProblem> doubts;
  for (const SvdDoubt& doubt : storage->doubts.All()) {
    doubts.push_back({LineOf(doubt.offset), TextOf(doubt)});
  }
  SortByLine(doubts);
  return doubts;
}

std::uint64_t RegisterMap::UntoldDoubts() const {
  return storage->doubts.Untold();
}

}  // namespace borvanusb
