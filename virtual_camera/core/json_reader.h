#pragma once

// Reads values of the configuration file. Errors name the place of the wrong value.

#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace virtual_camera {

// A value of a JSON document with its place in it, like "cameras[1].flash.size". Valid as long as
// the document is. Every member that can fail throws ConfigurationError with file, place and what
// is allowed there.
class JsonReader {
 public:
  JsonReader(const std::string& file, std::string place, const nlohmann::json& value)
      : file_(&file), place_(std::move(place)), value_(&value) {}

  // `allowed` completes "<file>: <place>: ".
  [[noreturn]] void Fail(const std::string& allowed) const;

  // The value must be an object with no other keys than these.
  void CheckKeys(std::initializer_list<std::string_view> keys) const;
  std::optional<JsonReader> Find(std::string_view key) const;
  JsonReader Require(std::string_view key, const std::string& meaning) const;

  std::vector<JsonReader> Elements(const std::string& meaning) const;
  std::vector<std::pair<std::string, JsonReader>> Members(const std::string& meaning) const;

  std::string Text(const std::string& meaning) const;
  bool Truth() const;
  double Fraction() const;  // 0 to 1

  // A JSON number or a text "0x…", from `minimum` to `maximum`.
  std::uint64_t Number(std::uint64_t minimum, std::uint64_t maximum) const;
  std::uint8_t Number8() const;
  std::uint32_t Number32() const;
  // Bytes: as Number, or a text that ends in K or M.
  std::uint64_t Size(std::uint64_t minimum, std::uint64_t maximum) const;
  // A result code: 32 bits, signed or not, or "S_OK", "S_FALSE".
  std::int32_t Result() const;
  // The key of a member as a number.
  std::uint32_t KeyNumber(const std::string& key, std::uint32_t maximum) const;

  // The value must be one of these texts.
  template <typename Value>
  Value Choice(std::initializer_list<std::pair<std::string_view, Value>> choices) const {
    std::string allowed = "must be one of";
    for (const auto& [name, value] : choices) {
      if (value_->is_string() && value_->get_ref<const std::string&>() == name) {
        return value;
      }
      allowed += (allowed.back() == 'f' ? " \"" : ", \"") + std::string(name) + "\"";
    }
    Fail(allowed);
  }

  bool IsText(std::string_view text) const;

 private:
  const std::string* file_;
  std::string place_;
  const nlohmann::json* value_;
};

}  // namespace virtual_camera
