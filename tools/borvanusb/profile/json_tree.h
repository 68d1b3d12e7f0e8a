#pragma once

#include <cstdint>
#include <exception>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace borvanusb {

struct JsonMember;

// A value of a JSON file that users write, with its line and path for messages.
struct JsonNode {
  enum class Kind : std::uint8_t { kNull, kBoolean, kNumber, kText, kList, kObject };

  Kind kind = Kind::kNull;
  bool boolean = false;
  bool whole = false;  // `number` is set: an integer from 0
  std::uint64_t number = 0;
  std::string text;                 // of a text; for other numbers, as written
  std::vector<JsonNode> items;      // of a list
  std::vector<JsonMember> members;  // of an object, in file order
  std::uint64_t line = 0;           // from 1
  std::string place;                // path: "flash.regions[1].range"; empty for the root

  const JsonNode* Find(std::string_view key) const;
};

struct JsonMember {
  std::string key;
  JsonNode value;
};

// Why a text is not valid JSON.
class JsonTextError : public std::exception {
 public:
  JsonTextError(std::uint64_t line, std::string text) : line_(line), text_(std::move(text)) {}
  std::uint64_t Line() const { return line_; }
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::uint64_t line_;
  std::string text_;
};

// Parses a text. Throws JsonTextError, also for a duplicate key in an object and for values nested
// deeper than 32 levels.
JsonNode ReadJsonTree(std::string_view text);

}  // namespace borvanusb
