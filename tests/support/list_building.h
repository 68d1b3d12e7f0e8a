#pragma once

// Lists of register settings, and the 64-byte blocks that come of them, for tests.

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "base/list_entry.h"
#include "protocol/flash_blocks.h"

namespace borvan::test {

using List = std::vector<ListEntry>;

// `count` registers from `first` on, each `step` behind the one before; the values count up by 1.
inline List Registers(std::uint32_t first, std::uint32_t count, std::uint32_t first_value,
                      std::uint32_t step = 1) {
  List list;
  for (std::uint32_t i = 0; i < count; ++i) {
    list.push_back({first + i * step, first_value + i});
  }
  return list;
}

inline List Joined(std::initializer_list<List> parts) {
  List list;
  for (const List& part : parts) {
    list.insert(list.end(), part.begin(), part.end());
  }
  return list;
}

// A block that begins with `bytes`; the bytes it does not use are 0xFF.
inline Packet Block(const std::vector<std::uint8_t>& bytes) {
  Packet packet;
  packet.fill(0xFF);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    packet.at(i) = bytes[i];
  }
  return packet;
}

// `head` and, behind it, `count` values that count up by 1.
inline Packet RunBlock(std::vector<std::uint8_t> head, std::uint32_t count, std::uint32_t value) {
  for (std::uint32_t i = 0; i < count; ++i) {
    head.push_back(static_cast<std::uint8_t>(value + i));
  }
  return Block(head);
}

// Eight bytes a line, so that a failure shows where two blocks differ.
inline std::string Text(const Packet& packet) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < packet.size(); ++i) {
    text += kDigits[packet[i] / 16];
    text += kDigits[packet[i] % 16];
    text += i % 8 == 7 ? '\n' : ' ';
  }
  return text;
}

}  // namespace borvan::test
