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

// Texts that the file does not have as they are: full names, indexes.
class TextArena {
 public:
  // Room for so many characters, which stays where it is.
  char* Take(std::size_t size);
  std::string_view Copy(std::string_view text);

 private:
  std::vector<std::unique_ptr<char[]>> blocks_;
  char* next_ = nullptr;
  std::size_t left_ = 0;
};

// The values of an enumeration; those that are derived from it share them.
struct MapValueList {
  std::vector<MapEnumeratedValue> values;
  std::uint32_t checked_bits = 0xFFFFFFFF;  // the narrowest field that they were held against
};

// What the values of a RegisterMap refer to.
struct MapStorage {
  std::string text;  // of the file
  TextArena arena;
  std::deque<MapRegisterForm> forms;
  std::deque<MapEnumeration> enumerations;
  std::deque<MapValueList> value_lists;
  SvdDoubts doubts;
  mutable std::vector<std::uint32_t> line_ends;  // made when a line is asked for
};

}  // namespace borvanusb
