#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace borvanusb {

// Fast comparison and search for short texts. Names, words and numbers are mostly so short that a
// call of memcmp() or memchr() costs more than the work itself, and a map has tens of thousands.

namespace short_text {

template <typename Part>
Part PartAt(std::string_view text, std::size_t place) {
  Part part = 0;
  std::memcpy(&part, text.data() + place, sizeof(part));
  return part;
}

template <typename Part>
bool IsEqualAt(std::string_view left, std::string_view right, std::size_t place) {
  return PartAt<Part>(left, place) == PartAt<Part>(right, place);
}

}  // namespace short_text

inline bool IsSameText(std::string_view left, std::string_view right) {
  using short_text::IsEqualAt;
  const std::size_t size = left.size();
  if (size != right.size()) {
    return false;
  }
  // The last part may overlap the part before it.
  if (size >= 8) {
    bool same = IsEqualAt<std::uint64_t>(left, right, 0);
    for (std::size_t place = 8; place + 8 < size; place += 8) {
      same = same && IsEqualAt<std::uint64_t>(left, right, place);
    }
    return same && IsEqualAt<std::uint64_t>(left, right, size - 8);
  }
  if (size >= 4) {
    return IsEqualAt<std::uint32_t>(left, right, 0) &&
           IsEqualAt<std::uint32_t>(left, right, size - 4);
  }
  return std::equal(left.begin(), left.end(), right.begin());
}

namespace short_text {

inline bool HasByte(std::string_view text, std::size_t place, std::uint64_t pattern) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  // Detects a zero byte: subtracting 1 from it borrows from the byte's highest bit.
  const std::uint64_t bytes = PartAt<std::uint64_t>(text, place) ^ pattern;
  return ((bytes - kOnes) & ~bytes & kHighBits) != 0;
}

}  // namespace short_text

inline bool HasCharacter(std::string_view text, char wanted) {
  if (text.size() < 8) {
    return std::find(text.begin(), text.end(), wanted) != text.end();
  }
  const std::uint64_t pattern = 0x0101010101010101U * static_cast<unsigned char>(wanted);
  for (std::size_t place = 0; place + 8 < text.size(); place += 8) {
    if (short_text::HasByte(text, place, pattern)) {
      return true;
    }
  }
  return short_text::HasByte(text, text.size() - 8, pattern);
}

}  // namespace borvanusb
