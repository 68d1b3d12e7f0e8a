#include "workbench/json_body.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "command/values.h"

namespace borvanusb {

namespace {

// The deepest valid body is a list of words in an object.
constexpr int kDeepest = 8;

Failure Wrong(const std::string& message) {
  return {ExitCode::kUsage, message, "docs/workbench-api.md describes the requests."};
}

nlohmann::json Parsed(const std::string& text) {
  const auto check_depth = [](int depth, nlohmann::json::parse_event_t /*event*/,
                              nlohmann::json& /*parsed*/) {
    if (depth > kDeepest) {
      throw Wrong("the body has too many levels");
    }
    return true;
  };
  try {
    return nlohmann::json::parse(text, check_depth);
  } catch (const nlohmann::json::exception&) {
    throw Wrong("the body is not valid JSON");
  }
}

}  // namespace

JsonBody::JsonBody(const std::string& text)
    : json_(std::make_unique<nlohmann::json>(Parsed(text))) {
  if (!json_->is_object()) {
    throw Wrong("the body is not a JSON object");
  }
}

JsonBody::JsonBody(std::unique_ptr<nlohmann::json> json) : json_(std::move(json)) {}

JsonBody::JsonBody(JsonBody&& other) noexcept = default;

JsonBody::~JsonBody() = default;

const nlohmann::json* JsonBody::Find(const char* key) const {
  const auto found = json_->find(key);
  return found == json_->end() || found->is_null() ? nullptr : &*found;
}

std::string JsonBody::Text(const char* key) const {
  const auto text = OptionalText(key);
  if (!text) {
    throw Wrong(Format("{} is missing", key));
  }
  return *text;
}

std::vector<std::string> JsonBody::Texts(const char* key) const {
  const nlohmann::json* const list = Find(key);
  if (list == nullptr || !list->is_array() ||
      !std::ranges::all_of(*list, [](const nlohmann::json& item) { return item.is_string(); })) {
    throw Wrong(Format("{}: a list of texts is needed", key));
  }
  return list->get<std::vector<std::string>>();
}

std::vector<JsonBody> JsonBody::Objects(const char* key) const {
  const nlohmann::json* const list = Find(key);
  if (list == nullptr || !list->is_array() ||
      !std::ranges::all_of(*list, [](const nlohmann::json& item) { return item.is_object(); })) {
    throw Wrong(Format("{}: a list of objects is needed", key));
  }
  std::vector<JsonBody> objects;
  for (const nlohmann::json& item : *list) {
    objects.push_back(JsonBody(std::make_unique<nlohmann::json>(item)));
  }
  return objects;
}

std::optional<std::string> JsonBody::OptionalText(const char* key) const {
  const nlohmann::json* const text = Find(key);
  if (text == nullptr) {
    return std::nullopt;
  }
  if (!text->is_string()) {
    throw Wrong(Format("{}: a text is needed", key));
  }
  return text->get<std::string>();
}

std::optional<bool> JsonBody::OptionalFlag(const char* key) const {
  const nlohmann::json* const flag = Find(key);
  if (flag == nullptr) {
    return std::nullopt;
  }
  if (!flag->is_boolean()) {
    throw Wrong(Format("{}: true or false is needed", key));
  }
  return flag->get<bool>();
}

std::optional<double> JsonBody::OptionalNumber(const char* key) const {
  const nlohmann::json* const number = Find(key);
  if (number == nullptr) {
    return std::nullopt;
  }
  if (!number->is_number()) {
    throw Wrong(Format("{}: a number is needed", key));
  }
  return number->get<double>();
}

void JsonBody::RefuseOthers(std::initializer_list<std::string_view> known) const {
  for (const auto& item : json_->items()) {
    if (std::ranges::find(known, std::string_view(item.key())) == known.end()) {
      throw Wrong(Format("unknown key {}", Quoted(item.key())));
    }
  }
}

}  // namespace borvanusb
