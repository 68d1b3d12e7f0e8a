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

// Reads typed values from JSON. An invalid value is reported as an error with its line and path,
// and counts as missing.
class ValueReader {
 public:
  explicit ValueReader(std::vector<ListProblem>& errors) : errors_(errors) {}

  void Wrong(const JsonNode& node, const std::string& why);

  // Whether a node is an object with no keys except these.
  bool IsObject(const JsonNode& node, std::initializer_list<std::string_view> keys);
  // The items of a list. Empty for null, and with an error for anything else.
  const std::vector<JsonNode>& Items(const JsonNode* node);

  // The text of a key. Returns nothing if the object does not have the key.
  std::optional<std::string> Text(const JsonNode& object, std::string_view key);
  // A required text that must not be empty.
  std::string NeededText(const JsonNode& object, std::string_view key);
  bool Flag(const JsonNode& object, std::string_view key, bool otherwise);
  // A number from 0 to `highest`, or a text such as "0x6c".
  std::optional<std::uint64_t> Number(const JsonNode& object, std::string_view key,
                                      std::uint64_t highest);
  std::optional<std::uint64_t> Number(const JsonNode& node, std::uint64_t highest);
  // The index of a text in `words`.
  std::optional<std::size_t> Choice(const JsonNode& object, std::string_view key,
                                    std::initializer_list<std::string_view> words);
  std::vector<std::string> Texts(const JsonNode& object, std::string_view key);

 private:
  std::vector<ListProblem>& errors_;
};

}  // namespace borvanusb
