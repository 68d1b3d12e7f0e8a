#pragma once

#include <initializer_list>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// A JSON object that a page sent. All functions throw Failure kUsage that names the key and the
// allowed values.
class JsonBody {
 public:
  explicit JsonBody(const std::string& text);
  ~JsonBody();
  JsonBody(const JsonBody&) = delete;
  JsonBody& operator=(const JsonBody&) = delete;
  JsonBody(JsonBody&& other) noexcept;
  JsonBody& operator=(JsonBody&&) = delete;

  // False when the key is missing or null.
  bool Has(const char* key) const { return Find(key) != nullptr; }
  std::string Text(const char* key) const;
  std::vector<std::string> Texts(const char* key) const;
  std::vector<JsonBody> Objects(const char* key) const;
  // Returns nothing if the key is missing or null.
  std::optional<std::string> OptionalText(const char* key) const;
  std::optional<bool> OptionalFlag(const char* key) const;
  std::optional<double> OptionalNumber(const char* key) const;
  // Throws if there is any other key. Otherwise its sender would believe that it has an effect.
  void RefuseOthers(std::initializer_list<std::string_view> known) const;

 private:
  explicit JsonBody(std::unique_ptr<nlohmann::json> json);
  // Null if the key is missing or null.
  const nlohmann::json* Find(const char* key) const;

  std::unique_ptr<nlohmann::json> json_;
};

}  // namespace borvanusb
