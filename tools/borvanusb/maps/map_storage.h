#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "maps/register_map.h"
#include "maps/svd_doubts.h"

namespace borvanusb {

// Memory for texts that do not occur in the file, such as full names and indexes.
class TextArena {
 public:
  // Returns memory for `size` characters. It never moves.
  char* Take(std::size_t size);
  std::string_view Copy(std::string_view text);

 private:
  std::vector<std::unique_ptr<char[]>> blocks_;
  char* next_ = nullptr;
  std::size_t left_ = 0;
};

// The values of an enumeration. Derived enumerations share them.
struct MapValueList {
  std::vector<MapEnumeratedValue> values;
  std::uint32_t checked_bits = 0xFFFFFFFF;  // the narrowest field that they were checked against
};

// Holds everything that a RegisterMap refers to.
struct MapStorage {
  std::string text;  // the content of the file
  TextArena arena;
  std::deque<MapRegisterForm> forms;
  std::deque<MapEnumeration> enumerations;
  std::deque<MapValueList> value_lists;
  SvdDoubts doubts;
  mutable std::vector<std::uint32_t> line_ends;  // filled when a line number is first needed
};

}  // namespace borvanusb
