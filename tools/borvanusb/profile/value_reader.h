#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lines.h"
#include "profile/json_tree.h"

namespace borvanusb {

// Takes typed values from JSON. What is wrong becomes an error with line and place, and the value
// is none.
class ValueReader {
 public:
  explicit ValueReader(std::vector<ListProblem>& errors) : errors_(errors) {}

  void Wrong(const JsonNode& node, const std::string& why);

  // Whether a node is an object with no other keys than these.
  bool IsObject(const JsonNode& node, std::initializer_list<std::string_view> keys);
  // The items of a list; none for null and with an error for anything else.
  const std::vector<JsonNode>& Items(const JsonNode* node);

  // Of an object's key; nothing when the key is not there.
  std::optional<std::string> Text(const JsonNode& object, std::string_view key);
  // A text that is not empty and must be there.
  std::string NeededText(const JsonNode& object, std::string_view key);
  bool Flag(const JsonNode& object, std::string_view key, bool otherwise);
  // A number, or a text such as "0x6c", from 0 to `highest`.
  std::optional<std::uint64_t> Number(const JsonNode& object, std::string_view key,
                                      std::uint64_t highest);
  std::optional<std::uint64_t> Number(const JsonNode& node, std::uint64_t highest);
  // The place of a text among the words.
  std::optional<std::size_t> Choice(const JsonNode& object, std::string_view key,
                                    std::initializer_list<std::string_view> words);
  std::vector<std::string> Texts(const JsonNode& object, std::string_view key);

 private:
  std::vector<ListProblem>& errors_;
};

}  // namespace borvanusb
