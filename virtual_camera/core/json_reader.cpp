#include "core/json_reader.h"

#include <algorithm>
#include <charconv>

#include "core/configuration.h"
#include "core/format.h"
#include "core/printable.h"

namespace virtual_camera {
namespace {

std::string Hexadecimal(std::uint64_t value) {
  return Format("{:#x}", value);
}

std::string Range(std::uint64_t minimum, std::uint64_t maximum) {
  const std::string upper = maximum > 0xFFFF ? Hexadecimal(maximum) : std::to_string(maximum);
  return Format("must be a number or a text \"0x…\", {} to {}", minimum, upper);
}

std::optional<std::uint64_t> ParseDigits(std::string_view text, int base) {
  std::uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value, base);
  if (error != std::errc() || rest != end) {
    return std::nullopt;
  }
  return value;
}

std::optional<std::uint64_t> ParseHexadecimal(std::string_view text) {
  if (!text.starts_with("0x") && !text.starts_with("0X")) {
    return std::nullopt;
  }
  return ParseDigits(text.substr(2), 16);
}

std::optional<std::uint64_t> ToNumber(const nlohmann::json& value) {
  if (value.is_number_unsigned()) {
    return value.get<std::uint64_t>();
  }
  if (value.is_string()) {
    return ParseHexadecimal(value.get_ref<const std::string&>());
  }
  return std::nullopt;
}

// A key may contain any characters, but the error that names it must stay one line.
std::string PlaceOf(const std::string& parent, std::string_view key) {
  return parent.empty() ? Printable(key) : Format("{}.{}", parent, Printable(key));
}

}  // namespace

void JsonReader::Fail(const std::string& allowed) const {
  throw ConfigurationError(
      Format("{}: {}{}", *file_, place_.empty() ? "" : Format("{}: ", place_), allowed));
}

void JsonReader::CheckKeys(std::initializer_list<std::string_view> keys) const {
  std::string known;
  for (const std::string_view key : keys) {
    known += Format("{}{}", known.empty() ? "" : ", ", key);
  }
  if (!value_->is_object()) {
    Fail(Format("must be an object with the keys {}", known));
  }
  for (const auto& [key, value] : value_->items()) {
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
      JsonReader(*file_, PlaceOf(place_, key), value)
          .Fail(Format("unknown key; allowed are {}", known));
    }
  }
}

std::optional<JsonReader> JsonReader::Find(std::string_view key) const {
  const auto found = value_->find(key);
  if (found == value_->end()) {
    return std::nullopt;
  }
  return JsonReader(*file_, PlaceOf(place_, key), *found);
}

JsonReader JsonReader::Require(std::string_view key, const std::string& meaning) const {
  const std::optional<JsonReader> found = Find(key);
  if (!found) {
    throw ConfigurationError(
        Format("{}: {}: missing; must be {}", *file_, PlaceOf(place_, key), meaning));
  }
  return *found;
}

std::vector<JsonReader> JsonReader::Elements(const std::string& meaning) const {
  if (!value_->is_array()) {
    Fail(Format("must be {}", meaning));
  }
  std::vector<JsonReader> elements;
  for (const nlohmann::json& element : *value_) {
    elements.emplace_back(*file_, Format("{}[{}]", place_, elements.size()), element);
  }
  return elements;
}

std::vector<std::pair<std::string, JsonReader>> JsonReader::Members(
    const std::string& meaning) const {
  if (!value_->is_object()) {
    Fail(Format("must be {}", meaning));
  }
  std::vector<std::pair<std::string, JsonReader>> members;
  for (const auto& [key, value] : value_->items()) {
    members.emplace_back(key, JsonReader(*file_, PlaceOf(place_, key), value));
  }
  return members;
}

std::string JsonReader::Text(const std::string& meaning) const {
  if (!value_->is_string()) {
    Fail(Format("must be {}", meaning));
  }
  return value_->get<std::string>();
}

bool JsonReader::Truth() const {
  if (!value_->is_boolean()) {
    Fail("must be true or false");
  }
  return value_->get<bool>();
}

double JsonReader::Fraction() const {
  const double value = value_->is_number() ? value_->get<double>() : -1.0;
  if (!(value >= 0.0 && value <= 1.0)) {
    Fail("must be a number, 0 to 1");
  }
  return value;
}

std::uint64_t JsonReader::Number(std::uint64_t minimum, std::uint64_t maximum) const {
  const std::optional<std::uint64_t> value = ToNumber(*value_);
  if (!value || *value < minimum || *value > maximum) {
    Fail(Range(minimum, maximum));
  }
  return *value;
}

std::uint8_t JsonReader::Number8() const {
  return static_cast<std::uint8_t>(Number(0, 0xFF));
}

std::uint32_t JsonReader::Number32() const {
  return static_cast<std::uint32_t>(Number(0, 0xFFFFFFFF));
}

std::uint64_t JsonReader::Size(std::uint64_t minimum, std::uint64_t maximum) const {
  constexpr std::uint64_t kKibi = 1024;
  std::optional<std::uint64_t> value = ToNumber(*value_);
  if (!value && value_->is_string()) {
    const auto& text = value_->get_ref<const std::string&>();
    const std::uint64_t unit = text.ends_with('K')   ? kKibi
                               : text.ends_with('M') ? kKibi * kKibi
                                                     : 0;
    const std::optional<std::uint64_t> count =
        unit == 0 ? std::nullopt
                  : ParseDigits(std::string_view(text).substr(0, text.size() - 1), 10);
    if (count && *count <= maximum / unit) {
      value = *count * unit;
    }
  }
  if (!value || *value < minimum || *value > maximum || *value % 4096 != 0) {
    Fail(Format("must be bytes like 1048576, \"256K\" or \"4M\", {}K to {}M, a multiple of 4096",
                minimum / kKibi, maximum / (kKibi * kKibi)));
  }
  return *value;
}

std::int32_t JsonReader::Result() const {
  if (IsText("S_OK")) {
    return 0;
  }
  if (IsText("S_FALSE")) {
    return 1;
  }
  if (value_->is_number_integer() && !value_->is_number_unsigned() &&
      value_->get<std::int64_t>() >= INT32_MIN) {
    return static_cast<std::int32_t>(value_->get<std::int64_t>());
  }
  const std::optional<std::uint64_t> value = ToNumber(*value_);
  if (!value || *value > 0xFFFFFFFF) {
    Fail("must be a 32-bit result code as a number or a text \"0x…\", or \"S_OK\" or \"S_FALSE\"");
  }
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(*value));
}

std::uint32_t JsonReader::KeyNumber(const std::string& key, std::uint32_t maximum) const {
  std::optional<std::uint64_t> value = ParseHexadecimal(key);
  if (!value) {
    value = ParseDigits(key, 10);
  }
  if (!value || *value > maximum) {
    Fail(Format("the key must be a decimal number or \"0x…\", 0 to {}", Hexadecimal(maximum)));
  }
  return static_cast<std::uint32_t>(*value);
}

bool JsonReader::IsText(std::string_view text) const {
  return value_->is_string() && value_->get_ref<const std::string&>() == text;
}

}  // namespace virtual_camera
